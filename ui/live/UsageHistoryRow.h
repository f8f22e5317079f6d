#pragma once

#include <QAbstractButton>

namespace tallowmere {

struct Theme;

// One line of the usage-history list: an application (with a disclosure chevron, pressed to
// open or close its endpoints) or one of its endpoints (indented, after a turn arrow), with
// the download and upload amounts in two right-aligned columns.
class UsageHistoryRow : public QAbstractButton {
    Q_OBJECT
public:
    enum class Kind { app, endpoint };
    static constexpr int kColumnWidth = 92;

    UsageHistoryRow(const Theme& theme, Kind kind, const QString& name, const QString& download, const QString& upload,
                    bool expanded = false, QWidget* parent = nullptr);

    Kind kind() const { return kind_; }
    const QString& name() const { return text_; }
    const QString& download() const { return download_; }
    const QString& upload() const { return upload_; }
    bool isExpanded() const { return expanded_; }

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    const Theme& theme_;
    Kind kind_;
    QString text_;
    QString download_;
    QString upload_;
    bool expanded_;
    bool hovered_ = false;
};

} // namespace tallowmere
