#pragma once

#include <QObject>

class QDBusVariant;

namespace slatewise {

/// Whether the desktop shows itself light or dark: what its settings portal says, and where there
/// is none, or it has no opinion, the lightness of the platform's palette. Lives on the GUI thread.
class ColorScheme : public QObject {
    Q_OBJECT

public:
    explicit ColorScheme(QObject* parent = nullptr);

    bool isDark() const;

Q_SIGNALS:
    void changed();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    Q_SLOT void portalSettingChanged(const QString& space, const QString& key,
                                     const QDBusVariant& value);

    /// As the portal numbers them.
    enum class Preference { None = 0, Dark = 1, Light = 2 };

    void readPortal();

    Preference preference_ = Preference::None;
};

} // namespace slatewise
