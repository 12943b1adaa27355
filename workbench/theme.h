#pragma once

class QAction;
class QObject;

/// Dark windows: the style Fusion with a dark palette, in which the waves keep their colours.

/// Whether the application's windows are dark, by the platform's palette or by `setDark`.
bool isDark();

/// For all windows of the application, also those that are open.
void setDark(bool dark);

/// A menu entry "Dark Theme" that follows and sets it, and keeps the choice in the settings.
QAction* makeThemeAction(QObject* parent);

/// Takes the choice that was kept; without one the platform's palette stays.
void restoreTheme();
