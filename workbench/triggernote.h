#pragma once

#include "trigger/syntax.h"

#include <QLabel>

/// Notes under a line that is typed into.

/// An empty one, not shown yet.
QLabel* makeNote(QString const& name, QWidget* parent);

/// Takes no room while it is empty.
void showNote(QLabel& note, QString const& text, bool isError);

/// The first error of a trigger's text with its place; empty without one.
QString errorNote(QString const& text, QList<VEK::TriggerError> const& errors);
