#include <algorithm>
#include <string_view>

#include "imagefiles/decoders.h"
#include "imagefiles/iff.h"
#include "imagefiles/promises.h"

namespace tessarine {

namespace {

/// What stands behind the name of a form, and that name; nothing where the file is no form.
struct Form {
    Bytes kind;
    Bytes content;
};

std::optional<Form> formOf(Bytes file) {
    ByteReader in(file);
    if (file.size() < 12 || !startsWith(in.take(4), "FORM")) return std::nullopt;
    in.skip(4);
    const Bytes kind = in.take(4);
    return Form{kind, in.rest()};
}

bool isIlbm(const Form& form) {
    return startsWith(form.kind, "ILBM") || startsWith(form.kind, "PBM ");
}

}  // namespace

std::optional<Decoded> takeOverIff(const PictureSource& source) {
    const std::optional<Form> form = formOf(source.file);
    if (!form) return std::nullopt;
    if (isIlbm(*form)) return decodeIlbm(form->content, startsWith(form->kind, "PBM "));
    if (startsWith(form->kind, "DEEP")) return decodeDeep(form->content);
    refuse("an IFF picture of this kind cannot be read");
}

std::optional<PromisedSize> promiseOfIff(Bytes file) {
    const std::optional<Form> form = formOf(file);
    if (form && isIlbm(*form)) return promiseOfIlbm(form->content);
    if (form && startsWith(form->kind, "DEEP")) return promiseOfDeep(form->content);
    return std::nullopt;
}

bool IffChunks::next() {
    if (in_.remaining() < 8) return false;
    const Bytes name = in_.take(4);
    name_ = std::string_view(reinterpret_cast<const char*>(name.data()), 4);
    const uint64_t size = in_.u32be();
    data_ = in_.take(std::min<uint64_t>(size, in_.remaining()));
    if (size % 2 != 0 && in_.remaining() > 0) in_.skip(1);
    return true;
}

std::vector<uint8_t> unpackByteRuns(ByteReader& in, size_t size, size_t unit) {
    std::vector<uint8_t> plain;
    plain.reserve(size);
    while (plain.size() < size) {
        const uint32_t code = in.u8();
        if (code == 128) continue;
        const size_t count = code < 128 ? code + 1 : 257 - code;
        const size_t room = size - plain.size();
        if (code < 128) {
            const Bytes stretch = in.take(count * unit);
            plain.insert(plain.end(), stretch.begin(),
                         stretch.begin() + static_cast<ptrdiff_t>(std::min(room, stretch.size())));
        } else {
            const Bytes value = in.take(unit);
            for (size_t i = 0; i < count && plain.size() < size; ++i)
                plain.insert(plain.end(), value.begin(), value.end());
        }
    }
    return plain;
}

}  // namespace tessarine
