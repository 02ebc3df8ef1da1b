#pragma once

#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace tessarine::tests {

/// One line of a table of cases, its fields by column name.
using CaseRow = std::map<std::string, std::string>;

inline std::string casesFolder() { return std::string(TESSARINE_SOURCE_DIR) + "/tests/cases/"; }

inline std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> parts;
    std::string part;
    std::istringstream stream(text);
    while (std::getline(stream, part, separator))
        parts.push_back(part);
    return parts;
}

/// Reads tests/cases/NAME, a table with tabs between its fields and a heading.
inline std::vector<CaseRow> readCases(const std::string& name) {
    std::ifstream file(casesFolder() + name);
    std::string line;
    std::getline(file, line);
    const std::vector<std::string> headings = split(line, '\t');
    std::vector<CaseRow> rows;
    while (std::getline(file, line)) {
        const std::vector<std::string> fields = split(line, '\t');
        CaseRow row;
        for (size_t i = 0; i < headings.size(); ++i)
            row[headings[i]] = i < fields.size() ? fields[i] : std::string();
        rows.push_back(std::move(row));
    }
    return rows;
}

/// How many cases of each family match; prints a line a family at its end of life.
class Tally {
  public:
    explicit Tally(std::string what) : what_(std::move(what)) {}
    ~Tally() {
        for (const auto& [family, counts] : families_)
            printf("%s %-28s %3d of %3d match\n", what_.c_str(), family.c_str(), counts.first,
                   counts.second);
    }
    Tally(const Tally&) = delete;
    Tally& operator=(const Tally&) = delete;

    void count(const std::string& family, bool matches) {
        families_[family].first += matches ? 1 : 0;
        ++families_[family].second;
        ++all_;
    }
    int all() const { return all_; }

  private:
    std::string what_;
    std::map<std::string, std::pair<int, int>> families_;
    int all_ = 0;
};

}  // namespace tessarine::tests
