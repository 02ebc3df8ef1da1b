#pragma once

#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include "batch/batch.h"
#include "runner/journal.h"
#include "runner/real_names.h"
#include "runner/recipe.h"

namespace tessarine {

/// Has a run do again only what is stale by its journal, and tells the journal what it does.
///
/// An output is up to date where it stands on the disk as it was left (size, time of modification
/// and time of any change), was made by the same recipe, and of sources that have the same size,
/// time of change and content.
/// Device, inode and the time of any change only spare the reading of a source whose marks are all
/// as they were: a copied folder is read once, and not done again. A source that was only touched
/// is done again: somebody gave it a new time on purpose.
class Resumption {
  public:
    /// Marks the tasks of an order by what the journal says of them, and has the order tell the
    /// journal of their beginnings and ends, as long as both live.
    /// \throws Refusal (nothingStarts) where the journal cannot be used, or a stale output that
    ///         would be replaced is itself a picture of the run
    Resumption(const std::string& journal, Journal::Use use, const cBatch& batch, RunOrder& order);
    Resumption(const Resumption&) = delete;
    Resumption& operator=(const Resumption&) = delete;

    /// Whether the journal took every line.
    bool isWhole() const { return journal_.isWhole(); }

  private:
    /// A picture under way.
    struct UnderWay {
        FileMarks marks;  ///< of its sources, before they were read
        bool settled = false;
        /// Of the sources, before they were read, where marks alone do not tell; empty otherwise.
        std::vector<std::optional<SourceRecord>> hashed;
        bool claimed = false;  ///< the journal says that it is begun
        bool isNew = false;    ///< claimed, and nothing stood under the output's name
    };

    Earlier judge(const PictureTask& task, JournalEntry& known);
    bool sourcesAreAsBefore(const PictureTask& task, JournalEntry& known);
    void begin(size_t place);
    void end(size_t place, const PictureReport& entry);
    /// What is to be told of an output that was made; nothing where what it was made of is not
    /// certain.
    std::optional<JournalEntry> record(const PictureTask& task, const UnderWay& picture,
                                       const PictureReport& entry);
    void tell(const PictureTask& task, JournalEntry::State state);

    Journal journal_;
    const Recipe recipe_;
    const RunOrder& order_;
    RealNames names_;
    std::map<size_t, UnderWay> underWay_;
};

}  // namespace tessarine
