#include "workbench/theme.h"

#include <QAction>
#include <QApplication>
#include <QPalette>
#include <QSettings>
#include <QStyle>
#include <QStyleFactory>

namespace {

QString const DarkKey = QStringLiteral("dark");

QPalette darkPalette()
{
    QColor const window(45, 45, 48);
    QColor const base(30, 30, 32);
    QColor const text(220, 220, 220);
    QColor const faint(128, 128, 128);
    QPalette palette;
    palette.setColor(QPalette::Window, window);
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Base, base);
    palette.setColor(QPalette::AlternateBase, QColor(38, 38, 41));
    palette.setColor(QPalette::ToolTipBase, window);
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::PlaceholderText, faint);
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::Button, QColor(56, 56, 60));
    palette.setColor(QPalette::ButtonText, text);
    palette.setColor(QPalette::BrightText, Qt::white);
    palette.setColor(QPalette::Light, QColor(80, 80, 84));
    palette.setColor(QPalette::Midlight, QColor(66, 66, 70));
    palette.setColor(QPalette::Mid, QColor(40, 40, 43));
    palette.setColor(QPalette::Dark, QColor(24, 24, 26));
    palette.setColor(QPalette::Shadow, Qt::black);
    palette.setColor(QPalette::Link, QColor(90, 160, 250));
    palette.setColor(QPalette::LinkVisited, QColor(170, 130, 220));
    palette.setColor(QPalette::Highlight, QColor(42, 110, 190));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    for (QPalette::ColorRole const role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::HighlightedText})
        palette.setColor(QPalette::Disabled, role, faint);
    palette.setColor(QPalette::Disabled, QPalette::Highlight, QColor(70, 70, 74));
    return palette;
}

} // namespace

bool isDark()
{
    return QApplication::palette().color(QPalette::Window).lightness() < 128;
}

void setDark(bool dark)
{
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QApplication::setPalette(dark ? darkPalette() : QApplication::style()->standardPalette());
}

QAction* makeThemeAction(QObject* parent)
{
    auto* const action = new QAction(QStringLiteral("Dark &Theme"), parent);
    action->setCheckable(true);
    action->setChecked(isDark());
    QObject::connect(action, &QAction::triggered, parent, [](bool dark) {
        setDark(dark);
        QSettings().setValue(DarkKey, dark);
    });
    return action;
}

void restoreTheme()
{
    QSettings const settings;
    if (settings.contains(DarkKey))
        setDark(settings.value(DarkKey).toBool());
}
