#pragma once

#include <functional>
#include <string>
#include <vector>

#include "batch/batch.h"
#include "runner/command_line.h"
#include "runner/real_names.h"

// Names of outputs, and the folders below the destination that they lie in.

namespace tessarine {

/// Tells of a picture of the basket, by its place from 0, that keeps a run from starting, and why.
using FoundConflict = std::function<void(size_t place, const std::string& why)>;

/// The outputs of a whole basket. They are made up where they are asked for: a basket may hold
/// millions, of which a run does a share.
class OutputNames {
  public:
    /// NAME<number>, or the pictures' own names.
    /// \param batch   with basket, destination, name and format; has to outlive this
    /// \param places  for each picture the folder below the destination, with separators inside
    ///                only; empty where all lie in the destination itself
    /// \throws Refusal where a name cannot be a file's
    OutputNames(const cBatch& batch, const CommandLine& line, std::vector<std::string> places);
    /// Outputs that are told one by one, for each picture of the basket.
    OutputNames(const cBatch& batch, std::vector<std::string> outputs);

    size_t count() const { return batch_.lvSelected.size(); }
    const std::string& inputOf(size_t place) const { return batch_.lvSelected[place].Tag; }
    /// Ends in a separator.
    const std::string& destination() const { return destination_; }
    std::string of(size_t place) const;
    PictureTask taskOf(size_t place) const;
    /// Whether all lie in one folder, each with a number of its own, so that no two are the same.
    bool areNumbers() const { return !keepNames_ && places_.empty() && told_.empty(); }

  private:
    const cBatch& batch_;
    std::string destination_;
    std::string extension_;
    bool keepNames_ = false;
    std::vector<std::string> places_;
    std::vector<std::string> told_;
};

/// Looks at the folders of outputs, as far as they are there.
/// \throws Refusal (nothingStarts) where an output is not to lie below the destination, one of its
///         folders is none, cannot be written to, or leads out of the destination
void checkFolders(const OutputNames& outputs);

/// Tells of pictures with the same output, and of outputs that are folders of others.
void findCollisions(const OutputNames& outputs, RealNames& names, const FoundConflict& found);

/// The folders of outputs, from the destination to those in them.
std::vector<std::string> foldersOf(const std::vector<PictureTask>& tasks,
                                   const std::string& destination);

/// Makes those that are missing. \throws Refusal (nothingStarts)
void makeFolders(const std::vector<std::string>& folders);

}  // namespace tessarine
