#pragma once

#include <QObject>
#include <QString>

#include <memory>

class QLocalServer;

namespace tallowmere {

// One running copy per user: the first start listens on a local socket; a later start hands
// its request to the first as a reopen and exits.
class SingleInstance : public QObject {
    Q_OBJECT
public:
    // The default name lives in the user's runtime folder, so each user has their own.
    explicit SingleInstance(QString name = defaultName(), QObject* parent = nullptr);
    ~SingleInstance() override;

    static QString defaultName();

    // True when a running copy took the reopen request; this start should then exit.
    bool handOverToRunningInstance();
    // Becomes the running copy; false (with the reason in `error`) when the socket can't be made.
    bool listen(QString* error = nullptr);

signals:
    void reopenRequested();

private:
    QString name_;
    std::unique_ptr<QLocalServer> server_;
};

} // namespace tallowmere
