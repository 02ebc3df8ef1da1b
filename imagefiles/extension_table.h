#pragma once

#include <optional>
#include <string_view>

#include <FreeImage.h>

#include "imagefiles/decode.h"
#include "imagefiles/decoding.h"

namespace tessarine {

/// Reads what the row's library cannot read, or reads wrongly.
/// \return nothing where the file is the library's to read or to refuse
/// \throws StatementFailed where the file is of the row's format and cannot be read
using TakeOver = std::optional<Decoded> (*)(const PictureSource& source);

/// What the header of a file of the row's format promises.
/// \throws StatementFailed where the header is damaged
using Promise = std::optional<PromisedSize> (*)(Bytes file);

/// Which library reads an extension.
enum class LoadRoute {
    freeImage,  ///< by the loader of `format`
    detected,   ///< by the loader that FreeImage finds for the content
    devil,
    none,  ///< by the row's take-over alone
};

/// One row of the extension table.
struct ExtensionRow {
    std::string_view extension;
    LoadRoute route;
    Promise promise = nullptr;  ///< nullptr where there is none, or it hangs on the content
    FREE_IMAGE_FORMAT format = FIF_UNKNOWN;
    int flags = 0;
    TakeOver takeOver = nullptr;
};

/// The row of an extension in lower case; nullptr where there is none.
const ExtensionRow* findExtension(std::string_view extension);
/// The first row of a format of the file library's; nullptr where there is none.
const ExtensionRow* findFormat(FREE_IMAGE_FORMAT format);

}  // namespace tessarine
