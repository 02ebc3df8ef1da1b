#include "batch/startup_record.h"

#include "batch/texts.h"
#include "pixels/byte_order.h"

namespace tessarine {

namespace {

/// Takes field after field from the front of the record's bytes.
class Reader {
  public:
    explicit Reader(std::string_view bytes) : bytes_(bytes) {}

    template <class Number>
    void read(Number& field) {
        field = littleEndianAt<Number>(bytes_, at_);
        at_ += sizeof field;
    }
    void read(FixedText& field) {
        std::string text(at_ < bytes_.size() ? bytes_.substr(at_, FixedText::length)
                                             : std::string_view());
        text.resize(FixedText::length, '\0');
        field = text;
        at_ += FixedText::length;
    }

  private:
    std::string_view bytes_;
    size_t at_ = 0;
};

class Writer {
  public:
    explicit Writer(std::string& bytes) : bytes_(bytes) {}

    template <class Number>
    void write(const Number& field) {
        appendLittleEndian(bytes_, field);
    }
    void write(const FixedText& field) { bytes_ += field.bytes(); }

  private:
    std::string& bytes_;
};

/// The order of the fields on disk.
template <class Record, class Visitor>
void visitFields(Record& record, Visitor visit) {
    visit(record.genericName);
    visit(record.lastFolder);
    visit(record.destinationFolder);
    visit(record.dialogFolder);
    visit(record.formatRow);
    visit(record.overwriteFiles);
    visit(record.maximized);
    visit(record.windowWidth);
    visit(record.windowHeight);
    visit(record.splitterBs11);
    visit(record.splitterBs13);
    visit(record.splitterBs12);
    visit(record.splitterBs21);
    visit(record.splitterBs14);
    visit(record.showDestination);
}

}  // namespace

FixedText& FixedText::operator=(const std::string& text) {
    bytes_ = text.substr(0, length);
    bytes_.resize(length, ' ');
    return *this;
}

std::string FixedText::rightTrimmed() const {
    return tessarine::rightTrimmed(std::string_view(bytes_).substr(0, bytes_.find('\0')));
}

StartupRecord StartupRecord::defaults(const std::string& programFolder) {
    StartupRecord record;
    record.genericName = "Sample";
    record.lastFolder = programFolder;
    record.destinationFolder = programFolder;
    record.dialogFolder = programFolder;
    record.formatRow = 6;
    record.overwriteFiles = 1;
    record.windowWidth = 640 * twipsPerPixel;
    record.windowHeight = 480 * twipsPerPixel;
    record.splitterBs11 = 30;
    record.splitterBs13 = 50;
    record.splitterBs12 = 75;
    record.splitterBs21 = 50;
    record.splitterBs14 = 30;
    record.showDestination = 1;
    return record;
}

std::string StartupRecord::toBytes() const {
    std::string bytes;
    bytes.reserve(bytesOnDisk);
    visitFields(*this,
                [writer = Writer(bytes)](const auto& field) mutable { writer.write(field); });
    return bytes;
}

StartupRecord StartupRecord::fromBytes(const std::string& bytes) {
    StartupRecord record;
    visitFields(record, [reader = Reader(bytes)](auto& field) mutable { reader.read(field); });
    return record;
}

}  // namespace tessarine
