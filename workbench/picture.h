#pragma once

#include <QSize>
#include <QString>

class QWidget;

/// Writes a picture of a widget in its size, whole or not at all: .svg and .pdf as lines and
/// letters, .png as pixels. False with an error in words, also for any other ending.
bool writePicture(QWidget& widget, QString const& path, QString& error);

/// Whether the name's ending is one of these.
bool isPictureName(QString const& path);

/// "WIDTHxHEIGHT" in pixels, each 50 to 20,000; an empty size for anything else.
QSize pictureSize(QString const& text);
