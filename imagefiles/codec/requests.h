#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "imagefiles/codec/blocks.h"
#include "imagefiles/codec/channel.h"
#include "imagefiles/codec/limits.h"
#include "imagefiles/codec/messages.h"
#include "imagefiles/picture_files.h"

// The two things that are asked of a helper, and what its answers may be. Nothing that it says is
// taken on trust.

namespace tessarine {

/// A helper broke its rules; it is not to be asked again.
class HelperLied : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// What it says is no answer to the request in hand.
class WrongNumber : public HelperLied {
  public:
    WrongNumber() : HelperLied("it answered what nobody had asked") {}
};

/// A text from a helper, fit to be shown: short, on one line, UTF-8, without control characters.
std::string printable(const std::string& text);

/// One request to a helper.
class HelperRequest {
  public:
    virtual ~HelperRequest() = default;

    /// What is sent, as request `number`; it begins the request, which then has heard nothing yet.
    virtual ToHelper begin(uint32_t number) = 0;
    /// What goes with it. The request's own, for as long as it lives.
    virtual std::vector<int> descriptors() const = 0;
    /// Hears what the helper says, and answers it on its socket.
    /// \return whether that was the end of the request
    /// \throws HelperLied
    virtual bool hear(const ToProgram& message, int socket) = 0;
    /// How long all of it may take on the wall's clock, by what is known so far.
    virtual std::chrono::duration<double> patience() const = 0;
};

/// How long a helper may take on the wall's clock: what a person wished, or else three times the
/// processor time that such a picture has.
std::chrono::duration<double> patienceFor(uint64_t pixels, const LimitWishes& wishes);

/// The reading of a picture.
class ReadingRequest : public HelperRequest {
  public:
    /// Waits until a picture of so many pixels has room in memory. \return whether it has
    using Admit = std::function<bool(uint64_t pixels)>;

    /// \param files      the open file, and the open companions behind it
    /// \param companions bit i for companion i
    /// \param admit      asked before a block is granted; may be empty
    /// \param metadata   what is wanted of it; where there is no memory, the outcome tells so
    ReadingRequest(BlockPool& pool, const LimitWishes& wishes, std::vector<Descriptor> files,
                   uint32_t companions, std::string extension, Admit admit = {},
                   std::optional<MetadataWanted> metadata = {});

    ToHelper begin(uint32_t number) override;
    std::vector<int> descriptors() const override;
    bool hear(const ToProgram& message, int socket) override;
    std::chrono::duration<double> patience() const override;

    ReadOutcome takeOutcome() { return std::move(outcome_); }

  private:
    void grant(const NeedBlock& wanted, int socket);
    void finish(const ReadDone& answer);
    FoundMetadata metadataOf(const ReadDone& answer) const;

    BlockPool& pool_;
    LimitWishes wishes_;
    std::vector<Descriptor> files_;
    uint32_t companions_;
    std::string extension_;
    Admit admit_;
    std::optional<MetadataWanted> wanted_;  ///< nothing where no metadata is
    std::shared_ptr<Block> metadata_;       ///< nullptr where none is wanted, or memory is short
    uint32_t number_ = 0;
    uint64_t pixels_ = 0;  ///< of the picture, as far as is known
    int asked_ = 0;
    std::string whyNotGranted_;  ///< the last block; empty while none was refused
    uint64_t grantedBytes_ = 0;
    std::map<uint32_t, std::shared_ptr<Block>> granted_;
    ReadOutcome outcome_;
};

/// A look at what a picture's header promises.
class LookingRequest : public HelperRequest {
  public:
    /// \param files, companions  as for a reading
    LookingRequest(const LimitWishes& wishes, std::vector<Descriptor> files, uint32_t companions,
                   std::string extension);

    ToHelper begin(uint32_t number) override;
    std::vector<int> descriptors() const override;
    bool hear(const ToProgram& message, int socket) override;
    std::chrono::duration<double> patience() const override;

    LookOutcome takeOutcome() { return std::move(outcome_); }

  private:
    LimitWishes wishes_;
    std::vector<Descriptor> files_;
    uint32_t companions_;
    std::string extension_;
    uint32_t number_ = 0;
    LookOutcome outcome_;
};

/// The writing of a picture.
class WritingRequest : public HelperRequest {
  public:
    /// \param output    the open output, whoever owns it
    /// \param metadata  nullptr for none; needed until the construction's end
    /// \throws StatementFailed where there is no memory to hand the picture over in
    WritingRequest(BlockPool& pool, const LimitWishes& wishes, const PixelBuffer& picture,
                   std::string extension, int16_t formatIndex, int output,
                   const MetadataToAdd* metadata = nullptr);

    ToHelper begin(uint32_t number) override;
    std::vector<int> descriptors() const override;
    bool hear(const ToProgram& message, int socket) override;
    std::chrono::duration<double> patience() const override;

    WriteOutcome takeOutcome() { return std::move(outcome_); }

  private:
    LimitWishes wishes_;
    int32_t width_;
    int32_t height_;
    std::shared_ptr<Block> block_;
    std::string extension_;
    int16_t formatIndex_;
    int output_;
    std::shared_ptr<Block> metadata_;  ///< nullptr for none
    uint32_t metadataBytes_ = 0;
    bool isTurned_ = false;
    bool withoutLocation_ = false;
    uint32_t number_ = 0;
    WriteOutcome outcome_;
};

}  // namespace tessarine
