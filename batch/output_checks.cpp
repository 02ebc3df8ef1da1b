#include "batch/output_checks.h"

#include <filesystem>
#include <map>
#include <utility>
#include <vector>

#include "batch/file_identity.h"

namespace tessarine {

namespace {

namespace fs = std::filesystem;

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
    using enum PictureInDanger::Danger;
    const std::vector<PictureTask>& tasks = order.tasks;
    const bool overwrite = order.onExists == OnExists::overwrite;
    std::map<FileIdentity, size_t> outputs;  // those that are there and would be replaced
    for (size_t at = 0; overwrite && at < tasks.size(); ++at)
        if (const auto identity = identityOf(tasks[at].output)) outputs.emplace(*identity, at);

    Places places;
    std::multimap<Place, size_t> missing;  // pictures that may come to be by this very run
    std::optional<PictureInDanger> found;
    for (size_t at = 0; !found && at < tasks.size(); ++at) {
        const std::string& input = tasks[at].input;
        if (const auto identity = identityOf(input)) {
            const auto replacing = outputs.find(*identity);
            if (replacing != outputs.end())
                found = PictureInDanger{replaced, input, tasks[replacing->second].output};
        } else if (auto place = places.of(behindLinks(input))) {
            missing.emplace(std::move(*place), at);
        }
    }
    size_t first = tasks.size();
    for (size_t maker = 0; !missing.empty() && maker < tasks.size(); ++maker) {
        const std::string& output = tasks[maker].output;
        const std::optional<Place> place = places.of(output);
        if (!place) continue;
        const auto [begin, end] = missing.equal_range(*place);
        for (auto one = begin; one != end; ++one) {
            // Without leave to overwrite, its own output at least comes too late to be read.
            if (one->second >= first || (one->second == maker && !overwrite)) continue;
            first = one->second;
            found = PictureInDanger{made, tasks[first].input, output};
        }
    }
    return found;
}

}  // namespace tessarine
