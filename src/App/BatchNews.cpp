#include "App/BatchNews.h"

#include "Platform/Desktop/DesktopNews.h"

#include <QWindow>

namespace slatewise {

BatchNews::BatchNews(const BatchControl& batch, const QWindow& window)
    : batch_(batch), window_(window) {
    connect(&batch, &BatchControl::changed, this, &BatchNews::show);
}

BatchNews::~BatchNews() {
    if (wasBusy_)
        DesktopNews::showProgress(std::nullopt);
}

void BatchNews::show() {
    const bool isBusy = batch_.isBusy();
    const bool hasEnded = wasBusy_ && !isBusy;
    wasBusy_ = isBusy;
    if (hasEnded) {
        shownPercent_ = -1;
        DesktopNews::showProgress(std::nullopt);
        if (!window_.isActive())
            tellEnd();
    }
    // A hundred steps are enough for an icon.
    const auto percent = static_cast<int>(100 * batch_.fraction());
    if (!isBusy || percent == shownPercent_)
        return;
    shownPercent_ = percent;
    DesktopNews::showProgress(batch_.fraction());
}

void BatchNews::tellEnd() const {
    using DesktopNews::Urgency;
    const bool hasFailed = batch_.standing() == BatchControl::Failed;
    DesktopNews::notify(batch_.title().section('\n', 0, 0), batch_.news().join('\n'),
                        hasFailed ? Urgency::Critical : Urgency::Normal);
}

} // namespace slatewise
