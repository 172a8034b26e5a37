#include "Views/Appearance.h"

#include <QFontDatabase>

namespace slatewise {

Appearance::Appearance(QObject* parent) : QObject(parent) {
    connect(&scheme_, &ColorScheme::changed, this, &Appearance::darkChanged);
}

QString Appearance::fixedFontFamily() const {
    return QFontDatabase::systemFont(QFontDatabase::FixedFont).family();
}

} // namespace slatewise
