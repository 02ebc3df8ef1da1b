#include "sample_files.h"

#include <zlib.h>

namespace tessarine::tests {

namespace {

std::string bmpV5() {
    FileBytes f;
    f.text("BM").le32({14 + 124 + 16, 0, 14 + 124});
    f.le32({124, 2, 2}).le16({1, 32}).le32({3, 16, 0, 0, 0, 0});
    f.le32({0xFF0000, 0xFF00, 0xFF, 0xFF000000}).zeros(124 - 56);
    f.u8({255, 0, 0, 9, 255, 255, 255, 9});  // bottom row: blue, white
    f.u8({0, 0, 255, 9, 0, 255, 0, 9});
    return f.str();
}

std::string bmpRuns8() {
    FileBytes f;
    f.text("BM").le32({0, 0, 14 + 40 + 16});
    f.le32({40, 2, 2}).le16({1, 8}).le32({1, 0, 0, 0, 4, 0});
    f.u8({0, 0, 255, 0, 0, 255, 0, 0, 255, 0, 0, 0, 255, 255, 255, 0});
    f.u8({1, 2, 1, 3, 0, 0, 1, 0, 1, 1, 0, 1});
    return f.str();
}

std::string dib() {
    FileBytes f;
    f.le32({40, 2, 2}).le16({1, 24}).le32({0, 0, 0, 0, 0, 0});
    f.u8({255, 0, 0, 255, 255, 255, 0, 0, 0, 0, 255, 0, 255, 0, 0, 0});
    return f.str();
}

std::string pcx24() {
    FileBytes f;
    f.u8({10, 5, 1, 8}).le16({0, 0, 1, 1, 72, 72}).zeros(48).u8({0, 3}).le16({2, 1}).zeros(58);
    f.u8({0xC1, 255, 0, 0, 0xC1, 255, 0, 0});  // red, green and blue of the upper row
    f.u8({0, 0xC1, 255, 0, 0xC1, 255, 0xC2, 255});
    return f.str();
}

std::string dcx() { return FileBytes().le32({0x3ADE68B1, 12, 0}).text(pcx24()).str(); }

std::string ras24() {
    FileBytes f;
    f.be32({0x59A66A95, 2, 2, 24, 12, 1, 0, 0});
    f.u8({0, 0, 255, 0, 255, 0, 255, 0, 0, 255, 255, 255});
    return f.str();
}

std::string pic24() {
    FileBytes f;
    f.be32({0x5380F634, 0}).zeros(80).text("PICT").be16({2, 2}).be32({0}).be16({3, 0});
    f.u8({0, 8, 2, 0xE0});
    f.u8({1, 255, 0, 0, 0, 255, 0, 0, 0, 0, 255, 0, 255, 255, 255});
    return f.str();
}

std::string pix24() {
    FileBytes f;
    f.be16({2, 2, 0, 0, 24});
    f.u8({1, 0, 0, 255, 1, 0, 255, 0, 1, 255, 0, 0, 1, 255, 255, 255});
    return f.str();
}

std::string sgi16() {
    FileBytes f;
    f.be16({474}).u8({0, 2}).be16({3, 2, 2, 3}).zeros(500);
    f.be16({0, 0xFFFF, 0xFFFF, 0});  // red, lower row first
    f.be16({0, 0xFFFF, 0, 0xFFFF});  // green
    f.be16({0xFFFF, 0xFFFF, 0, 0});  // blue
    return f.str();
}

std::string xpm() {
    return "/* XPM */\nstatic char *x[] = {\n\"2 2 4 1\",\n\"r c red\",\n\"g c #00FF00\",\n"
           "\"b c #00f\",\n\"w s back c None\",\n\"rg\",\n\"bw\"\n};\n";
}

std::string ilbm() {
    FileBytes body;
    body.u8({0x40, 0, 0, 0, 0x40, 0, 0xC0, 0});
    FileBytes f;
    f.text("ILBM");
    f.chunk("BMHD", FileBytes().be16({2, 2, 0, 0}).u8({2, 0, 0, 0}).zeros(8).str());
    f.chunk("CMAP", FileBytes().u8({255, 0, 0, 0, 255, 0, 0, 0, 255, 255, 255, 255}).str());
    f.chunk("BODY", body.str());
    return FileBytes().chunk("FORM", f.str()).str();
}

std::string deep() {
    FileBytes f;
    f.text("DEEP");
    f.chunk("DGBL", FileBytes().be16({2, 2, 1}).u8({1, 1}).str());
    f.chunk("DPEL", FileBytes().be32({3}).be16({1, 8, 2, 8, 3, 8}).str());
    f.chunk("DBOD", FileBytes().u8({3, 255, 0, 0, 0, 255, 0, 0, 0, 255, 255, 255, 255}).str());
    return FileBytes().chunk("FORM", f.str()).str();
}

/// Begins at the right, so that the file library would mirror it.
std::string tgaFromRight() {
    FileBytes f;
    f.u8({0, 0, 2}).zeros(9).le16({2, 2}).u8({24, 0x30});
    f.u8({0, 255, 0, 0, 0, 255, 255, 255, 255, 255, 0, 0});
    return f.str();
}

std::string dds() {
    FileBytes f;
    f.text("DDS ").le32({124, 0x1007, 2, 2, 6, 0, 0}).zeros(44);
    f.le32({32, 0x40, 0, 24, 0xFF0000, 0xFF00, 0xFF, 0}).zeros(20);
    f.u8({0, 0, 255, 0, 255, 0, 255, 0, 0, 255, 255, 255});
    return f.str();
}

std::string raw() {
    FileBytes f;
    f.le32({2, 2, 1}).u8({3, 1, 255, 0, 0, 0, 255, 0, 0, 0, 255, 255, 255, 255});
    return f.str();
}

std::string mdl() {
    FileBytes f;
    f.text("IDST").le32({10}).zeros(172).le32({1, 192}).zeros(4);
    f.zeros(68).le32({2, 2, 192 + 80});
    f.u8({0, 1, 2, 3}).u8({255, 0, 0, 0, 255, 0, 0, 0, 255, 255, 255, 255}).zeros(756);
    return f.str();
}

std::string pspBlock(uint32_t kind, const std::string& data) {
    return FileBytes()
        .text(std::string("~BK\0", 4))
        .le16({kind})
        .le32({static_cast<uint32_t>(data.size())})
        .text(data)
        .str();
}

std::string pspChannel(uint32_t use, uint32_t channel, const std::string& samples) {
    std::string packed(100, '\0');
    uLongf length = packed.size();
    compress(reinterpret_cast<Bytef*>(packed.data()), &length,
             reinterpret_cast<const Bytef*>(samples.data()), samples.size());
    packed.resize(length);
    FileBytes f;
    f.le32({16, static_cast<uint32_t>(length), static_cast<uint32_t>(samples.size())});
    f.le16({use, channel}).text(packed);
    return pspBlock(5, f.str());
}

std::string psp() {
    FileBytes image;
    image.le32({46, 2, 2}).zeros(8).u8({1}).le16({2, 24, 1}).le32({1u << 24}).zeros(15);
    FileBytes layer;
    const std::string name = "Layer";
    FileBytes head;
    head.le16({static_cast<uint32_t>(name.size())}).text(name).u8({1});
    head.le32({0, 0, 2, 2, 0, 0, 2, 2}).u8({255, 0, 1, 0}).zeros(20);
    layer.le32({static_cast<uint32_t>(head.str().size()) + 4}).text(head.str());
    layer.le32({8}).le16({2, 4});
    layer.text(pspChannel(0, 1, FileBytes().u8({255, 0, 0, 0}).str()));
    layer.text(pspChannel(0, 2, FileBytes().u8({0, 255, 0, 0}).str()));
    layer.text(pspChannel(0, 3, FileBytes().u8({0, 0, 255, 0}).str()));
    layer.text(pspChannel(1, 0, FileBytes().u8({255, 255, 255, 0}).str()));
    FileBytes f;
    f.text("Paint Shop Pro Image File\n\x1A").zeros(5).le16({5, 0});
    return f.text(pspBlock(0, image.str())).text(pspBlock(3, pspBlock(4, layer.str()))).str();
}

std::string gif() {
    FileBytes f;
    f.text("GIF89a").le16({2, 2}).u8({0x81, 0, 0});
    f.u8({255, 0, 0, 0, 255, 0, 0, 0, 255, 0, 0, 0});
    f.u8({0x21, 0xF9, 4, 1, 0, 0, 3, 0});  // colour 3 is transparent
    f.u8({0x2C}).le16({0, 0, 2, 2}).u8({0});
    // clear, 0, 1, 2, 3, end in codes of 3 bits
    f.u8({2, 3, 0x44, 0x34, 0x05, 0, 0x3B});
    return f.str();
}

}  // namespace

std::vector<std::pair<std::string, std::string>> smallFiles() {
    return {{"bmp", bmpV5()},        {"bmp", bmpRuns8()}, {"dib", dib()},   {"pcx", pcx24()},
            {"dcx", dcx()},          {"ras", ras24()},    {"pic", pic24()}, {"pix", pix24()},
            {"sgi", sgi16()},        {"xpm", xpm()},      {"iff", ilbm()},  {"lbm", deep()},
            {"tga", tgaFromRight()}, {"dds", dds()},      {"raw", raw()},   {"mdl", mdl()},
            {"psp", psp()},          {"gif", gif()}};
}

}  // namespace tessarine::tests
