#include "batch/output_checks.h"

#include <filesystem>
#include <map>
#include <system_error>
#include <utility>

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

/// The run's outputs by their places, and which task makes each.
std::map<Place, size_t> makersOf(const RunOrder& order, Places& places) {
    std::map<Place, size_t> makers;
    for (size_t at = 0; at < order.tasks.size(); ++at)
        if (auto place = places.of(order.tasks[at].output)) makers.emplace(std::move(*place), at);
    return makers;
}

}  // namespace

std::optional<PictureInDanger> pictureInDanger(const RunOrder& order) {
    using enum PictureInDanger::Danger;
    const bool overwrite = order.onExists == OnExists::overwrite;
    std::map<FileIdentity, const PictureTask*> outputs;  // that are there
    for (const PictureTask& task : order.tasks) {
        if (!overwrite) break;
        if (const auto identity = identityOf(task.output)) outputs.emplace(*identity, &task);
    }
    Places places;
    std::optional<std::map<Place, size_t>> makers;  // only where a picture is missing
    for (size_t at = 0; at < order.tasks.size(); ++at) {
        const std::string& input = order.tasks[at].input;
        if (const auto identity = identityOf(input)) {
            const auto found = outputs.find(*identity);
            if (found != outputs.end())
                return PictureInDanger{replaced, input, found->second->output};
            continue;
        }
        // It may come to be by this very run. Without leave to overwrite, its own output at least
        // comes too late to be read.
        if (!makers) makers = makersOf(order, places);
        const std::optional<Place> place = places.of(fs::path(behindLinks(input)));
        const auto found = place ? makers->find(*place) : makers->end();
        if (found == makers->end() || (found->second == at && !overwrite)) continue;
        return PictureInDanger{made, input, order.tasks[found->second].output};
    }
    return std::nullopt;
}

}  // namespace tessarine
