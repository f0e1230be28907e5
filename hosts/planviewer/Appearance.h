#pragma once

#include "Preferences.h"

/// The look of all windows.
namespace Appearance {

/// Light, dark or as the system has it; takes effect at once.
void apply(Preferences::Theme theme);

/// Installs the translations: "zh", "en", or as the system has it when empty. Once, before any window.
void applyLanguage(const QString& language);

} // namespace Appearance
