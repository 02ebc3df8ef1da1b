#pragma once

#include <functional>

#include <CLI/CLI.hpp>

namespace tessarine {

using OptionsVisitor = std::function<void(const CLI::App&)>;

/// Shows all options with their groups, descriptions, value names and checks: manual page and
/// completions are made from them.
void visitOptions(const OptionsVisitor& visitor);

}  // namespace tessarine
