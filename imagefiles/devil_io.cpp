#include "imagefiles/devil_io.h"

namespace tessarine {

namespace {

MemoryReader* source = nullptr;

ILHANDLE ILAPIENTRY openSource(ILconst_string) {
    source->seek(0);
    return source;
}
void ILAPIENTRY closeSource(ILHANDLE) {}
ILboolean ILAPIENTRY isAtEnd(ILHANDLE) { return source->isAtEnd() ? IL_TRUE : IL_FALSE; }
ILint ILAPIENTRY getByte(ILHANDLE) {
    ILubyte byte = 0;
    return source->read(&byte, 1, 1) == 1 ? byte : IL_EOF;
}
ILint ILAPIENTRY readItems(void* target, ILuint size, ILuint count, ILHANDLE) {
    return static_cast<ILint>(source->read(target, size, count));
}
ILint ILAPIENTRY seekSource(ILHANDLE, ILint offset, ILint origin) {
    return source->seek(offset, origin) ? 0 : -1;
}
ILint ILAPIENTRY tellSource(ILHANDLE) { return static_cast<ILint>(source->tell()); }

}  // namespace

DevilReads::DevilReads(MemoryReader& reader) {
    source = &reader;
    ilSetRead(openSource, closeSource, isAtEnd, getByte, readItems, seekSource, tellSource);
}

DevilReads::~DevilReads() {
    ilResetRead();
    source = nullptr;
}

ILenum takeDevilError(bool* outOfMemory) {
    const ILenum first = ilGetError();
    bool noMemory = first == IL_OUT_OF_MEMORY;
    if (first != IL_NO_ERROR)
        for (ILenum next = ilGetError(); next != IL_NO_ERROR; next = ilGetError())
            noMemory = noMemory || next == IL_OUT_OF_MEMORY;
    if (outOfMemory != nullptr) *outOfMemory = noMemory;
    return first;
}

}  // namespace tessarine
