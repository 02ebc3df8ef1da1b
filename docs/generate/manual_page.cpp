#include "manual_page.h"

#include <algorithm>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <utility>
#include <vector>

#include <fmt/format.h>

namespace tessarine {

namespace {

// Behind the heading of an entry that is not written by hand.
constexpr std::string_view mark = ".\\\" as --help tells it";

using Lines = std::vector<std::string>;

struct Entry {
    Lines lines;
    std::vector<std::string> options;
    bool isMarked = false;
};

/// Entries under one subheading.
struct Group {
    std::string title;
    Lines head;
    std::vector<Entry> entries;
};

Lines linesOf(std::string_view text) {
    Lines lines;
    std::istringstream stream{std::string(text)};
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

/// The options that a line of a heading names.
void addOptionsIn(const std::string& line, std::vector<std::string>& options) {
    static const std::regex option(R"((^| |")((\\-){1,2}[a-z0-9]([a-z0-9]|\\-)*))");
    for (std::sregex_iterator at(line.begin(), line.end(), option), end; at != end; ++at)
        options.push_back(replaced((*at)[2], "\\-", "-"));
}

std::vector<Group> groupsOf(const Lines& lines) {
    std::vector<Group> groups;
    bool isHeading = false;
    for (const std::string& line : lines) {
        if (line.starts_with(".SS ")) groups.push_back({line.substr(4), {}, {}});
        if (groups.empty()) throw std::runtime_error("OPTIONS begins with no subheading");
        Group& group = groups.back();
        if (line == ".TP" || line.starts_with(".TP ")) group.entries.emplace_back();
        if (group.entries.empty()) {
            group.head.push_back(line);
            continue;
        }
        Entry& entry = group.entries.back();
        if (isHeading) addOptionsIn(line, entry.options);
        isHeading = line.starts_with(".TP") || line.starts_with(".TQ");
        entry.isMarked = entry.isMarked || line == mark;
        entry.lines.push_back(line);
    }
    return groups;
}

std::string forManual(std::string_view text) {
    std::string out = replaced(std::string(text), "\\", "\\e");
    // A hyphen that starts an option is one that people copy.
    out = std::regex_replace(out, std::regex("(^|[^A-Za-z0-9])-(-?)([a-z0-9])"), "$1@MINUS$2$3");
    out = replaced(std::move(out), "@MINUS-", "\\-\\-");
    out = replaced(std::move(out), "@MINUS", "\\-");
    if (out.starts_with('.') || out.starts_with('\'')) out.insert(0, "\\&");
    return out;
}

/// Text in lines of a hundred columns.
void addWrapped(const std::string& text, Lines& lines) {
    constexpr size_t columns = 100;
    std::istringstream words(text);
    std::string line;
    for (std::string word; words >> word;) {
        if (!line.empty() && line.size() + 1 + word.size() > columns)
            lines.push_back(std::exchange(line, {}));
        // A line that begins with a point would be a command.
        if (line.empty() && (word.starts_with('.') || word.starts_with('\'')))
            word.insert(0, "\\&");
        line += (line.empty() ? "" : " ") + word;
    }
    lines.push_back(line);
}

Entry entryFrom(const OptionEntry& option) {
    Entry entry;
    entry.isMarked = true;
    entry.options = option.names;
    std::string names;
    for (const std::string& name : option.names)
        names += (names.empty() ? "" : ", ") + replaced(name, "-", "\\-");
    const std::string value = replaced(replaced(option.valueName, "\"", ""), "-", "\\-");
    entry.lines.push_back(".TP");
    entry.lines.push_back(value.empty() ? fmt::format(".B {}", names)
                                        : fmt::format(".BI \"{}\" \" {}\"", names, value));
    entry.lines.emplace_back(mark);
    addWrapped(forManual(option.description) + ".", entry.lines);
    return entry;
}

bool isOf(const Entry& entry, const OptionEntry& option) {
    return std::any_of(entry.options.begin(), entry.options.end(), [&](const std::string& name) {
        return std::find(option.names.begin(), option.names.end(), name) != option.names.end();
    });
}

void refuseUnknown(const std::vector<Group>& groups, const Program& program) {
    for (const Group& group : groups)
        for (const Entry& entry : group.entries)
            for (const std::string& name : entry.options)
                if (std::none_of(program.options.begin(), program.options.end(),
                                 [&](const OptionEntry& option) {
                                     return std::find(option.names.begin(), option.names.end(),
                                                      name) != option.names.end();
                                 }))
                    throw std::runtime_error(fmt::format(
                        "the manual page tells {}, which {} does not have", name, program.name));
}

/// The group of an option; a new one stands behind that of the option before it.
Group& groupFor(std::vector<Group>& groups, const std::string& title, const std::string& before) {
    const auto find = [&groups](const std::string& wanted) {
        return std::find_if(groups.begin(), groups.end(),
                            [&](const Group& group) { return group.title == wanted; });
    };
    auto place = find(title);
    if (place != groups.end()) return *place;
    place = find(before);
    if (place != groups.end()) ++place;
    return *groups.insert(place, Group{title, {".SS " + title}, {}});
}

void addMissing(std::vector<Group>& groups, const Program& program) {
    const OptionEntry* before = nullptr;
    for (const OptionEntry& option : program.options) {
        Group& group = groupFor(groups, option.group, before ? before->group : "");
        std::vector<Entry>& entries = group.entries;
        const bool isThere = std::any_of(groups.begin(), groups.end(), [&](const Group& other) {
            return std::any_of(other.entries.begin(), other.entries.end(),
                               [&](const Entry& entry) { return isOf(entry, option); });
        });
        if (!isThere) {
            auto place = entries.end();
            if (before != nullptr && before->group == option.group) {
                const auto last =
                    std::find_if(entries.rbegin(), entries.rend(),
                                 [&](const Entry& entry) { return isOf(entry, *before); });
                if (last != entries.rend()) place = last.base();
            }
            entries.insert(place, entryFrom(option));
        }
        before = &option;
    }
}

}  // namespace

std::string completedManualPage(std::string_view page, const Program& program) {
    const Lines lines = linesOf(page);
    const auto start = std::find(lines.begin(), lines.end(), ".SH OPTIONS");
    if (start == lines.end()) throw std::runtime_error("the manual page has no section OPTIONS");
    const auto end = std::find_if(start + 1, lines.end(),
                                  [](const std::string& line) { return line.starts_with(".SH "); });

    std::vector<Group> groups = groupsOf({start + 1, end});
    for (Group& group : groups)
        std::erase_if(group.entries, [](const Entry& entry) { return entry.isMarked; });
    refuseUnknown(groups, program);
    addMissing(groups, program);
    std::erase_if(groups, [](const Group& group) { return group.entries.empty(); });

    std::string text;
    const auto add = [&text](auto from, auto to) {
        for (; from != to; ++from)
            text += *from + "\n";
    };
    add(lines.begin(), start + 1);
    for (const Group& group : groups) {
        add(group.head.begin(), group.head.end());
        for (const Entry& entry : group.entries)
            add(entry.lines.begin(), entry.lines.end());
    }
    add(end, lines.end());
    return text;
}

}  // namespace tessarine
