# Run as: cmake -DINPUT=FILE -DOUTPUT=FILE -DSYMBOL=NAME -P EmbedFile.cmake
# Writes a C++ source that holds the bytes of INPUT as tessarine::SYMBOL.
file(READ ${INPUT} bytes HEX)
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${bytes}")
string(REGEX REPLACE "(................................................................................)"
  "\\1\n" bytes "${bytes}")
file(WRITE ${OUTPUT} "#include <cstddef>\n\nnamespace tessarine {\n"
  "extern const unsigned char ${SYMBOL}[];\nextern const std::size_t ${SYMBOL}Size;\n"
  "const unsigned char ${SYMBOL}[] = {\n${bytes}};\n"
  "const std::size_t ${SYMBOL}Size = sizeof ${SYMBOL};\n}  // namespace tessarine\n")
