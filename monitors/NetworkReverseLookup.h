#pragma once

#include <QObject>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

namespace tallowmere {

// The host name registered for an IPv4 or IPv6 address in text form; none when the text is no
// address or no name is known (a numeric answer does not count). Blocking.
std::optional<QString> reverseLookup(const QString& ip);

// Runs blocking lookups on worker threads and hands each answer to `deliver` on the thread that
// made this object. Answers go through a context object this owns, never through the
// application object, and a worker posts only while holding the lock under which destruction
// takes the context away: nothing is ever posted to an object being destroyed. Destruction does
// not wait for a slow resolver: lookups not yet begun are skipped and late answers dropped.
class ReverseLookups {
public:
    using Lookup = std::function<std::optional<QString>(const QString& ip)>;
    using Deliver = std::function<void(const QString& ip, const std::optional<QString>& name)>;

    ReverseLookups(Lookup lookup, Deliver deliver);
    ~ReverseLookups();
    ReverseLookups(const ReverseLookups&) = delete;
    ReverseLookups& operator=(const ReverseLookups&) = delete;

    void start(const QString& ip);

private:
    struct Mailbox;

    Lookup lookup_;
    Deliver deliver_;
    QObject context_;
    std::shared_ptr<Mailbox> mailbox_;
};

} // namespace tallowmere
