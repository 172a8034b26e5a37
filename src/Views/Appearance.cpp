#include "Views/Appearance.h"

#include <QFontDatabase>
#include <QGuiApplication>
#include <QStyleHints>

namespace slatewise {

Appearance::Appearance(QObject* parent) : QObject(parent) {
    connect(&scheme_, &ColorScheme::changed, this, &Appearance::darkChanged);
}

QString Appearance::fixedFontFamily() const {
    return QFontDatabase::systemFont(QFontDatabase::FixedFont).family();
}

int Appearance::doubleClickInterval() const {
    return QGuiApplication::styleHints()->mouseDoubleClickInterval();
}

} // namespace slatewise
