#pragma once

#include <QByteArray>

#include <nlohmann/json_fwd.hpp>

#include <optional>
#include <string>

namespace tallowmere {

// Pretty-printed JSON for people and agents to read: keys sorted at every level, two blanks
// of indentation, a blank on each side of the colon, numbers in their shortest form that
// reads back to the same value. Nothing is written for a value that cannot be represented
// (a NaN or an infinity, text that is not UTF-8): the result is then absent.
std::optional<QByteArray> prettyJSON(const nlohmann::json& value);

// The same, with "{}" standing in for a value that cannot be written.
QByteArray prettyJSONOrEmpty(const nlohmann::json& value);

// Compact JSON (no blanks), "{}" when the value cannot be written.
QByteArray compactJSONOrEmpty(const nlohmann::json& value);

} // namespace tallowmere
