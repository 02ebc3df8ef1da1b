#pragma once

#include <fcntl.h>
#include <optional>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

#include "imagefiles/format_table.h"
#include "imagefiles/image_files.h"
#include "support/files.h"
#include "support/paths.h"
#include "support/pictures.h"

namespace tessarine::tests {

/// Runs a shell's command, in which "$1" stands for a path, with its output in a file.
/// \return its exit status
inline int runShell(const std::string& command, const std::string& path,
                    const std::string& outputPath) {
    const pid_t child = fork();
    if (child == 0) {
        const int output = open(outputPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        const int nothing = open("/dev/null", O_RDWR);
        dup2(nothing, 0);
        dup2(output, 1);
        dup2(nothing, 2);
        execl("/bin/sh", "sh", "-c", command.c_str(), "sh", path.c_str(), nullptr);
        _exit(127);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128;
}

/// Whether the program that a command begins with is there.
inline bool isInstalled(const std::string& command) {
    return runShell("command -v " + command.substr(0, command.find(' ')), "", "/dev/null") == 0;
}

/// A picture as a program of others reads it, which writes a pixmap to its standard output.
/// Nothing where it refuses the file.
inline std::optional<Bitmap> readBy(const std::string& command, const std::string& path) {
    const ScratchFolder scratch;
    if (runShell(command, path, scratch / "read") != 0) return std::nullopt;
    if (runShell("ppmtoppm < \"$1\"", scratch / "read", scratch / "pixmap") != 0)
        return std::nullopt;
    return Bitmap(readPixmap(scratch / "pixmap"));
}

inline PictureHolder holding(Bitmap bitmap) {
    PictureHolder holder;
    holder.setPicture(std::move(bitmap));
    return holder;
}

/// Saves by a row of the format table, to a path of the row's extension.
inline SaveOutcome saveBy(const FormatRow& row, const Bitmap& bitmap, const std::string& path,
                          bool overwrite = false) {
    mFormat format;
    PictureHolder holder = holding(bitmap);
    const auto index = static_cast<int16_t>(&row - formatTable().data());
    return SaveImageFile(format, holder, std::string(row.extension), path, overwrite, index);
}

}  // namespace tessarine::tests
