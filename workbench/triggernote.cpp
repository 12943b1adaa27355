#include "workbench/triggernote.h"

using namespace VEK;

QLabel* makeNote(QString const& name, QWidget* parent)
{
    auto* const note = new QLabel(parent);
    note->setObjectName(name);
    note->setTextFormat(Qt::PlainText);
    note->setWordWrap(true);
    note->hide();
    return note;
}

void showNote(QLabel& note, QString const& text, bool isError)
{
    note.setText(text);
    note.setStyleSheet(isError ? QStringLiteral("color: #e04038") : QString());
    note.setVisible(!text.isEmpty());
}

QString errorNote(QString const& text, QList<TriggerError> const& errors)
{
    if (errors.isEmpty())
        return QString();
    TriggerError const& error = errors.first();
    QString const place = text.mid(error.position, error.length);
    return place.isEmpty() ? error.message : QStringLiteral("%1: %2").arg(place, error.message);
}
