#pragma once

#include "Model/Copying/BatchControl.h"

#include <QObject>

class QWindow;

namespace slatewise {

/// Lets the desktop show how a batch stands: its progress on the program's icon, and how it ended
/// in a notification when the user is not at the window. GUI thread.
class BatchNews : public QObject {
    Q_OBJECT

public:
    /// Both outlive this.
    BatchNews(const BatchControl& batch, const QWindow& window);
    /// Leaves no bar behind.
    ~BatchNews() override;

private:
    void show();
    void tellEnd() const;

    const BatchControl& batch_;
    const QWindow& window_;
    bool wasBusy_ = false;
    int shownPercent_ = -1;
};

} // namespace slatewise
