#pragma once

#include <string>

#include <nlohmann/json.hpp>

#include "batch/batch.h"

namespace tessarine {

/// The chain with all that its rows read besides a picture: the rows with their columns, what the
/// sheet shows, and what stands in the working state before the first row.
nlohmann::ordered_json chainAsJson(const cBatch& batch);
/// Gives a new program the chain of chainAsJson().
/// \throws nlohmann::json::exception, StatementFailed where this is no chain
void takeChain(cBatch& batch, const nlohmann::ordered_json& json);

nlohmann::ordered_json metadataAsJson(const MetadataWishes& wishes);
/// \throws nlohmann::json::exception
MetadataWishes metadataOfJson(const nlohmann::ordered_json& json);

/// What shapes the outputs of a run besides their sources: the chain, the format, what is kept of
/// metadata, and the program's version.
class Recipe {
  public:
    Recipe(const cBatch& batch, const MetadataWishes& metadata);

    /// Two pictures of the same content with the same key become the same output. The number takes
    /// part where a function draws random numbers, which hang on it, and the extension always: a
    /// file is read by it.
    std::string keyOf(const PictureTask& task) const;

  private:
    std::string hash_;
    bool drawsRandomNumbers_;
};

}  // namespace tessarine
