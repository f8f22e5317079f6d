#include "monitors/TextScan.h"

#include <charconv>

namespace tallowmere {

namespace {

bool isBlank(char c) { return c == ' ' || c == '\t'; }

} // namespace

std::optional<std::string_view> FieldScanner::next()
{
    std::size_t start = 0;
    while (start < rest_.size() && isBlank(rest_[start]))
        ++start;
    if (start == rest_.size()) {
        rest_ = {};
        return std::nullopt;
    }
    std::size_t end = start;
    while (end < rest_.size() && !isBlank(rest_[end]))
        ++end;
    const std::string_view field = rest_.substr(start, end - start);
    rest_.remove_prefix(end);
    return field;
}

bool FieldScanner::skip(int count)
{
    for (int i = 0; i < count; ++i) {
        if (!next())
            return false;
    }
    return true;
}

std::optional<std::string_view> LineScanner::next()
{
    if (done_ || rest_.empty())
        return std::nullopt;
    const std::size_t end = rest_.find('\n');
    if (end == std::string_view::npos) {
        done_ = true;
        return rest_;
    }
    const std::string_view line = rest_.substr(0, end);
    rest_.remove_prefix(end + 1);
    return line;
}

std::optional<std::uint64_t> parseDecimal(std::string_view text)
{
    if (text.empty() || text.front() < '0' || text.front() > '9')
        return std::nullopt;
    std::uint64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return value;
}

} // namespace tallowmere
