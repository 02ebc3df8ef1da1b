#pragma once

#include <set>
#include <string>
#include <vector>

#include "batch/batch.h"
#include "batch/file_identity.h"
#include "runner/command_line.h"

namespace tessarine {

/// A picture as the basket has it.
BasketItem basketItem(const std::string& path);

/// The pictures of a command line.
struct GivenBasket {
    std::vector<BasketItem> pictures;
    /// With --keep-tree the folder of each below the destination, separators inside only, empty for
    /// the destination itself; without it nothing.
    std::vector<std::string> places;
    /// With --shard all folders that were searched for pictures.
    std::set<FileIdentity> searched;
};

/// The basket of a command line, in its order. A path that does not exist stays in it, so that
/// the numbers of the others hang on the list alone.
///
/// With --keep-tree a picture of a folder keeps its place below that folder, one that is named by
/// itself has none, and those of a list keep theirs below the deepest folder that holds them all;
/// with --below all keep theirs below that folder. Places go by names: "." and ".." are taken away,
/// links stay.
/// \throws Refusal (nothingStarts) for a list that cannot be read, and for a picture that does not
///         lie below the folder of --below
GivenBasket collectPictures(const CommandLine& line);

/// Looks whether a share's outputs would lie in folders that were searched for its pictures: each
/// share would find others' outputs among them, and all numbers behind those would be others.
/// \throws Refusal (nothingStarts)
void refuseOutputsAmongSources(const GivenBasket& basket, const CommandLine& line);

}  // namespace tessarine
