#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace tallowmere {

// Walks blank-separated fields of one line of kernel text (blanks and tabs).
class FieldScanner {
public:
    explicit FieldScanner(std::string_view text) : rest_(text) {}
    std::optional<std::string_view> next();
    // Skips `count` fields; false when the line ends first.
    bool skip(int count);

private:
    std::string_view rest_;
};

// Walks the lines of a text, without their line feeds.
class LineScanner {
public:
    explicit LineScanner(std::string_view text) : rest_(text) {}
    std::optional<std::string_view> next();

private:
    std::string_view rest_;
    bool done_ = false;
};

// A run of decimal digits only (no sign, no blanks) that fits 64 bits.
std::optional<std::uint64_t> parseDecimal(std::string_view text);

} // namespace tallowmere
