#include "batch/functions.h"

#include <algorithm>
#include <array>

#include "batch/function_groups.h"
#include "batch/texts.h"

namespace tessarine {

namespace {

struct Catalogue {
    std::vector<TreeNode> nodes;
    std::vector<FunctionDef> functions;
    std::array<const FunctionDef*, highestFunctionId + 1> byId{};
};

void addGroup(Catalogue& catalogue, std::string_view group, std::vector<FunctionDef> functions) {
    catalogue.nodes.push_back({group});
    for (FunctionDef& function : functions) {
        catalogue.nodes.push_back({function.name, function.id});
        function.treeIndex = static_cast<int16_t>(catalogue.nodes.size());
        catalogue.functions.push_back(std::move(function));
    }
}

Catalogue makeCatalogue() {
    Catalogue catalogue;
    addGroup(catalogue, "Adjustments", adjustmentFunctions());
    addGroup(catalogue, "Filters", filterFunctions());
    addGroup(catalogue, "Colors", colorFunctions());
    addGroup(catalogue, "Deformations", deformationFunctions());
    for (FunctionDef& function : functionsWithoutNode()) {
        catalogue.functions.push_back(std::move(function));
    }
    std::sort(catalogue.functions.begin(), catalogue.functions.end(),
              [](const FunctionDef& a, const FunctionDef& b) { return a.id < b.id; });
    // The pointers hold beyond the return: a vector that is moved keeps its elements in place.
    for (const FunctionDef& function : catalogue.functions) {
        catalogue.byId.at(static_cast<size_t>(function.id)) = &function;
    }
    return catalogue;
}

const Catalogue& catalogue() {
    static const Catalogue made = makeCatalogue();
    return made;
}

}  // namespace

std::span<const FunctionDef> functionTable() { return catalogue().functions; }

const FunctionDef* findFunction(int32_t id) {
    if (id < 0 || id > highestFunctionId) return nullptr;
    return catalogue().byId[static_cast<size_t>(id)];
}

const FunctionDef* findFunction(std::string_view name) {
    const std::string wanted = lowerCase(name);
    for (const FunctionDef& function : functionTable()) {
        // Without a node there is no catalogue name.
        if (function.treeIndex > 0 && lowerCase(function.name) == wanted) return &function;
    }
    return nullptr;
}

std::span<const TreeNode> catalogueTree() { return catalogue().nodes; }

}  // namespace tessarine
