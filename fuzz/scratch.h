#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

#include "expect.h"

/// Writes a file in the place of any that is there. It is removed first: file systems have the
/// bytes of a file that is cut to nothing and written again reach the disk at once, which takes
/// longer than a fuzzer's whole work on an input.
inline void writeAnew(const std::string& path, std::string_view bytes) {
    std::filesystem::remove(path);
    std::ofstream file(path, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    expect(file.good());
}

/// A folder of this process for what is parsed from a file; gone at the process's end.
class Scratch {
  public:
    Scratch() {
        std::string name = std::filesystem::temp_directory_path() / "tessarine-fuzz-XXXXXX";
        expect(::mkdtemp(name.data()) != nullptr);
        folder_ = name;
    }
    ~Scratch() {
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    const std::string& folder() const { return folder_; }
    std::string path(std::string_view name) const { return folder_ + '/' + std::string(name); }
    /// A file of these bytes and no others.
    std::string write(std::string_view name, std::string_view bytes) const {
        writeAnew(path(name), bytes);
        return path(name);
    }
    std::string read(std::string_view name) const {
        std::ifstream file(path(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    void remove(std::string_view name) const { std::filesystem::remove(path(name)); }

  private:
    std::string folder_;
};
