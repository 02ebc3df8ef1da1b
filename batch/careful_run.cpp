#include <algorithm>
#include <utility>

#include "batch/batch.h"
#include "batch/output_checks.h"
#include "batch/parallelism.h"
#include "batch/texts.h"
#include "imagefiles/disk.h"
#include "imagefiles/leftovers.h"
#include "pixels/machine.h"
#include "pixels/threads.h"

// The window's run with each picture by itself, which tells what failed.

namespace tessarine {

namespace {

using Status = PictureReport::Status;

constexpr const char* lineEnd = "\r\n";

std::string inQuotes(const std::string& text) { return "'" + text + "'"; }

/// For the time of a run the machine is shared out among the pictures in flight; behind it the
/// window has it to itself again.
class SharedOut {
  public:
    SharedOut(PictureFiles& files, const Parallelism& shares) : files_(files) {
        allowManyFiles();
        setFilterThreads(shares.filterThreads);
    }
    ~SharedOut() {
        setFilterThreads(before_);
        files_.prepareFor(1);
    }
    SharedOut(const SharedOut&) = delete;
    SharedOut& operator=(const SharedOut&) = delete;

  private:
    PictureFiles& files_;
    const int32_t before_ = filterThreads();
};

/// Why a run is not begun, for whoever pressed the button.
std::string refusalOf(const PictureInDanger& found) {
    const std::string input = inQuotes(onOneLine(found.input));
    const std::string why =
        found.danger == PictureInDanger::Danger::replaced
            ? "The run would replace one of its own pictures: " + input +
                  " is in the Image Basket, and the result " + inQuotes(onOneLine(found.output)) +
                  " would be saved over it."
            : "The run would make one of its own pictures: " + input +
                  " is in the Image Basket and does not exist, and a result would get its name.";
    return why + lineEnd + lineEnd +
           "Please choose another destination folder or another generic name in Step 3.";
}

}  // namespace

class cBatch::CarefulRun {
  public:
    CarefulRun(cBatch& owner, std::string destination, RunOrder order)
        : owner_(owner), destination_(std::move(destination)), order_(std::move(order)) {
        order_.inWindow = true;
        order_.onTold = [this] { pictureHasEnded(); };
    }

    void run() {
        begin();
        {
            const Parallelism shares = parallelismFor(order_.tasks.size());
            owner_.jobs = shares.jobs;
            const SharedOut machine(owner_.files_, shares);
            // A generic name may lead to another folder than the destination.
            const std::string folder = folderOf(order_.tasks.front().output);
            removeLeftDrafts(folder);
            owner_.BatchEach(order_);
            syncFolder(folder);
        }
        end();
    }

  private:
    void begin() {
        owner_.pb.max = static_cast<int32_t>(order_.tasks.size());
        owner_.pb.value = 0;
        owner_.openOverview(destination_);
        owner_.runsCarefully_ = true;
        owner_.pb.visible = true;
        owner_.platform_.changed("pb");
    }

    void pictureHasEnded() {
        ++owner_.pb.value;
        owner_.platform_.changed("pb");
        const std::vector<PictureReport>& entries = owner_.report.entries();
        const size_t before = told_;
        for (; told_ < entries.size(); ++told_)
            tell(entries[told_]);
        if (told_ > before) owner_.platform_.changed("RTF");
    }

    void tell(const PictureReport& entry) {
        const std::string output =
            entry.output.substr(std::min(destination_.size(), entry.output.size()));
        switch (entry.status) {
            case Status::saved:
                ++saved_;
                writeLine(" Processed Image Saved as " + output);
                break;
            case Status::kept:
                ++kept_;
                writeLine(" Existing File Kept: " + output);
                break;
            case Status::failed:
                failures_.push_back(told_);
                writeLine(" Failed: " + fileNameOf(entry.input));
                break;
        }
    }

    void end() {
        const size_t begun = owner_.report.entries().size();
        const size_t all = order_.tasks.size();
        writeLine("");
        writeLine(begun < all ? " Processing Stopped!" : " Processing Completed!");
        writeLine(" " + std::to_string(saved_) + " saved, " + std::to_string(kept_) + " kept, " +
                  std::to_string(failures_.size()) + " failed of " + std::to_string(all) +
                  (all == 1 ? " picture" : " pictures") +
                  (begun < all ? ", " + std::to_string(all - begun) + " not begun" : ""));
        tellFailures();
        owner_.runsCarefully_ = false;
        owner_.platform_.changed("RTF");
        owner_.pb.visible = false;
        owner_.platform_.changed("pb");
        if (!failures_.empty()) owner_.platform_.changed("failedPictures");
        if (owner_.chkShowDestination != 0) owner_.platform_.openPath(destination_);
    }

    void tellFailures() {
        if (failures_.empty()) return;
        writeLine("");
        writeLine(" Failures:");
        for (const size_t at : failures_) {
            const PictureReport& entry = owner_.report.entries()[at];
            writeLine(" " + entry.input + ": " + entry.message);
            owner_.failedPictures.push_back(entry.input);
        }
    }

    /// Names may hold what ends a line.
    void writeLine(const std::string& text) { owner_.RTF += lineEnd + onOneLine(text); }

    cBatch& owner_;
    const std::string destination_;
    RunOrder order_;
    size_t told_ = 0;  ///< entries of the report that stand in the overview
    size_t saved_ = 0;
    size_t kept_ = 0;
    std::vector<size_t> failures_;  ///< their places in the report
};

void cBatch::BatchCarefully() {
    const std::optional<std::string> destination = checkBeforeRun();
    if (!destination) return;
    RunOrder order = orderOfBasket();
    if (const std::optional<PictureInDanger> found = pictureInDanger(order)) {
        platform_.messageBox(refusalOf(*found), Icon::information);
        return;
    }
    CarefulRun(*this, *destination, std::move(order)).run();
}

}  // namespace tessarine
