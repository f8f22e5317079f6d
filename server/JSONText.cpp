#include "server/JSONText.h"

#include "core/NumberFormat.h"

#include <nlohmann/json.hpp>

#include <charconv>
#include <cmath>

namespace tallowmere {

namespace {

bool isValidUtf8(const std::string& text)
{
    std::size_t i = 0;
    const std::size_t n = text.size();
    while (i < n) {
        const auto c = static_cast<unsigned char>(text[i]);
        int extra = 0;
        std::uint32_t code = 0;
        if (c < 0x80) {
            ++i;
            continue;
        } else if ((c & 0xE0) == 0xC0) {
            extra = 1;
            code = c & 0x1F;
        } else if ((c & 0xF0) == 0xE0) {
            extra = 2;
            code = c & 0x0F;
        } else if ((c & 0xF8) == 0xF0) {
            extra = 3;
            code = c & 0x07;
        } else {
            return false;
        }
        if (i + static_cast<std::size_t>(extra) >= n)
            return false;
        for (int k = 1; k <= extra; ++k) {
            const auto d = static_cast<unsigned char>(text[i + k]);
            if ((d & 0xC0) != 0x80)
                return false;
            code = (code << 6) | (d & 0x3F);
        }
        // Overlong forms, surrogates and values beyond the last code point are not UTF-8.
        static constexpr std::uint32_t minimum[] = {0, 0x80, 0x800, 0x10000};
        if (code < minimum[extra] || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF))
            return false;
        i += static_cast<std::size_t>(extra) + 1;
    }
    return true;
}

void appendString(std::string& out, const std::string& text)
{
    static constexpr char hex[] = "0123456789abcdef";
    out += '"';
    for (const char ch : text) {
        const auto c = static_cast<unsigned char>(ch);
        switch (c) {
        case '"': out += "\\\""; break;
        case '\\': out += "\\\\"; break;
        case '\n': out += "\\n"; break;
        case '\r': out += "\\r"; break;
        case '\t': out += "\\t"; break;
        case '\b': out += "\\b"; break;
        case '\f': out += "\\f"; break;
        default:
            if (c < 0x20) {
                out += "\\u00";
                out += hex[c >> 4];
                out += hex[c & 0xF];
            } else {
                out += ch;
            }
        }
    }
    out += '"';
}

class PrettyWriter {
public:
    bool write(const nlohmann::json& value, int depth)
    {
        switch (value.type()) {
        case nlohmann::json::value_t::object:
            return writeContainer(value, depth, '{', '}');
        case nlohmann::json::value_t::array:
            return writeContainer(value, depth, '[', ']');
        case nlohmann::json::value_t::string: {
            const auto& text = value.get_ref<const std::string&>();
            if (!isValidUtf8(text))
                return false;
            appendString(out, text);
            return true;
        }
        case nlohmann::json::value_t::number_float: {
            const auto text = shortestNumber(value.get<double>());
            if (!text)
                return false;
            out += *text;
            return true;
        }
        case nlohmann::json::value_t::number_integer:
            out += std::to_string(value.get<std::int64_t>());
            return true;
        case nlohmann::json::value_t::number_unsigned:
            out += std::to_string(value.get<std::uint64_t>());
            return true;
        case nlohmann::json::value_t::boolean:
            out += value.get<bool>() ? "true" : "false";
            return true;
        case nlohmann::json::value_t::null:
            out += "null";
            return true;
        default:
            return false; // binary and discarded values have no JSON form
        }
    }

    std::string out;

private:
    void indent(int depth) { out.append(static_cast<std::size_t>(depth) * 2, ' '); }

    // Objects are std::maps underneath, so their iteration order is already sorted by key.
    bool writeContainer(const nlohmann::json& value, int depth, char open, char close)
    {
        out += open;
        if (value.empty()) {
            out += close;
            return true;
        }
        out += '\n';
        bool first = true;
        for (auto it = value.begin(); it != value.end(); ++it) {
            if (!first)
                out += ",\n";
            first = false;
            indent(depth + 1);
            if (value.is_object()) {
                if (!isValidUtf8(it.key()))
                    return false;
                appendString(out, it.key());
                out += " : ";
            }
            if (!write(it.value(), depth + 1))
                return false;
        }
        out += '\n';
        indent(depth);
        out += close;
        return true;
    }
};

} // namespace

std::optional<QByteArray> prettyJSON(const nlohmann::json& value)
{
    PrettyWriter writer;
    if (!writer.write(value, 0))
        return std::nullopt;
    return QByteArray::fromStdString(writer.out);
}

QByteArray prettyJSONOrEmpty(const nlohmann::json& value)
{
    return prettyJSON(value).value_or(QByteArrayLiteral("{}"));
}

QByteArray compactJSONOrEmpty(const nlohmann::json& value)
{
    try {
        return QByteArray::fromStdString(value.dump());
    } catch (const nlohmann::json::exception&) {
        // Text that is not UTF-8 cannot be written.
        return QByteArrayLiteral("{}");
    }
}

} // namespace tallowmere
