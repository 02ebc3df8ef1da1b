#include "expect.h"
#include "input.h"
#include "pixels/failures.h"
#include "runner/journal.h"
#include "runner/refusal.h"
#include "scratch.h"

using namespace tessarine;

// A line of any bytes is a piece of a line, is refused, or comes back the same. A file of any bytes
// is refused and stays as it is, or takes another line, and gives it back as its last.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const Scratch scratch;
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    attempt([&] {
        const std::optional<JournalEntry> entry = entryOfLine(bytes);
        if (!entry) return;
        const std::string line = lineOf(*entry);
        const std::optional<JournalEntry> again = entryOfLine(line);
        expect(again && again->output == entry->output && again->state == entry->state);
        expect(lineOf(*again) == line);
    });

    const std::string path = scratch.write("journal", bytes);
    JournalEntry told;
    told.output = "/told";
    try {
        size_t before = 0;
        Journal(path, Journal::Use::look).read([&](const JournalEntry&) { ++before; });
        Journal journal(path, Journal::Use::append);
        journal.append(told);
        expect(journal.isWhole());
        std::string last;
        size_t after = 0;
        journal.read([&](const JournalEntry& entry) {
            last = entry.output;
            ++after;
        });
        expect(after == before + 1 && last == told.output);
    } catch (const Refusal& refusal) {
        expect(refusal.status() == ExitStatus::nothingStarts);
        expect(std::string(refusal.what()).starts_with("--resume: "));
        expect(scratch.read("journal") == bytes);
    }
    return 0;
}
