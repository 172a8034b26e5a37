#pragma once

#include <QString>

#include <optional>

/// Tells a user who looks elsewhere how the work stands, over the session bus. A desktop that shows
/// no such thing is no failure. GUI thread, which is never held up.
namespace slatewise::DesktopNews {

/// The bar on the program's icon, from 0 to 1; empty takes it away.
void showProgress(std::optional<double> fraction);

enum class Urgency { Normal, Critical };

/// A notification, plain text; a critical one stays until the user has seen it.
void notify(const QString& title, const QString& text, Urgency urgency);

} // namespace slatewise::DesktopNews
