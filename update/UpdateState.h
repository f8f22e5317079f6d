#pragma once

#include "update/AvailableUpdate.h"

#include <QString>

#include <optional>

namespace tallowmere {

// Where the update service stands. Two states are equal when their kind and payload are.
class UpdateState {
public:
    enum class Kind { available, downloading, failed, idle, checking, upToDate, installing };

    UpdateState() = default;

    static UpdateState idle() { return UpdateState(Kind::idle); }
    static UpdateState checking() { return UpdateState(Kind::checking); }
    static UpdateState upToDate() { return UpdateState(Kind::upToDate); }
    static UpdateState installing() { return UpdateState(Kind::installing); }
    static UpdateState available(AvailableUpdate update);
    static UpdateState downloading(double progress);
    static UpdateState failed(QString message);

    Kind kind() const { return kind_; }
    bool is(Kind kind) const { return kind_ == kind; }
    // The offered update while available, else nothing.
    const std::optional<AvailableUpdate>& availableUpdate() const { return update_; }
    // Download progress from 0 to 1 while downloading, else 0.
    double progress() const { return progress_; }
    // The text shown to the user while failed, else empty.
    const QString& failureMessage() const { return message_; }

    bool operator==(const UpdateState&) const = default;

private:
    explicit UpdateState(Kind kind) : kind_(kind) {}

    Kind kind_ = Kind::idle;
    std::optional<AvailableUpdate> update_;
    double progress_ = 0;
    QString message_;
};

} // namespace tallowmere
