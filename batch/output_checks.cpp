#include "batch/output_checks.h"

#include <filesystem>
#include <map>
#include <system_error>
#include <utility>

#include "batch/file_identity.h"

namespace tessarine {

namespace {

namespace fs = std::filesystem;

/// A path behind all links at its end, also where there is nothing.
fs::path behindLinks(fs::path path) {
    constexpr int mostLinks = 40;  // as many as the system follows
    std::error_code failure;
    for (int i = 0; i < mostLinks && fs::is_symlink(fs::symlink_status(path, failure)); ++i)
        path = path.parent_path() / fs::read_symlink(path, failure);
    return path;
}

/// Where a file stands or will stand: its folder and its name.
using Place = std::pair<FileIdentity, std::string>;

/// The places of a run's files, whose folders are looked at once.
class Places {
  public:
    /// Nothing where there is no such folder.
    std::optional<Place> of(const fs::path& file) {
        const std::string folder = file.parent_path();
        auto known = folders_.find(folder);
        if (known == folders_.end())
            known = folders_.emplace(folder, identityOf(folder.empty() ? "." : folder)).first;
        if (!known->second) return std::nullopt;
        return Place(*known->second, file.filename());
    }

  private:
    std::map<std::string, std::optional<FileIdentity>> folders_;
};

}  // namespace

std::optional<PictureInDanger> pictureInDanger(const RunOrder& order) {
    return pictureInDanger(
        order.tasks.size(), [&](size_t at) { return order.tasks[at]; }, order.onExists);
}

std::optional<PictureInDanger> pictureInDanger(size_t tasks,
                                               const std::function<PictureTask(size_t)>& taskAt,
                                               OnExists onExists) {
    using enum PictureInDanger::Danger;
    const bool overwrite = onExists == OnExists::overwrite;
    std::map<FileIdentity, size_t> outputs;  // those that are there and would be replaced
    for (size_t at = 0; overwrite && at < tasks; ++at)
        if (const auto identity = identityOf(taskAt(at).output)) outputs.emplace(*identity, at);

    Places places;
    std::multimap<Place, size_t> missing;  // pictures that may come to be by this very run
    std::optional<PictureInDanger> found;
    for (size_t at = 0; !found && at < tasks; ++at) {
        const std::string input = taskAt(at).input;
        if (const auto identity = identityOf(input)) {
            const auto replacing = outputs.find(*identity);
            if (replacing != outputs.end())
                found = PictureInDanger{replaced, input, taskAt(replacing->second).output};
        } else if (auto place = places.of(behindLinks(input))) {
            missing.emplace(std::move(*place), at);
        }
    }
    size_t first = tasks;
    for (size_t maker = 0; !missing.empty() && maker < tasks; ++maker) {
        const std::string output = taskAt(maker).output;
        const std::optional<Place> place = places.of(output);
        if (!place) continue;
        const auto [begin, end] = missing.equal_range(*place);
        for (auto one = begin; one != end; ++one) {
            // Without leave to overwrite, its own output at least comes too late to be read.
            if (one->second >= first || (one->second == maker && !overwrite)) continue;
            first = one->second;
            found = PictureInDanger{made, taskAt(first).input, output};
        }
    }
    return found;
}

}  // namespace tessarine
