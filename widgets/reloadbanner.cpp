#include "widgets/reloadbanner.h"

#include "widgets/images.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPixmap>
#include <QPushButton>
#include <QStyle>
#include <QTextDocument>

namespace VEK {

namespace {

/// A sentence about a file, whose path gives way where there is no room for all of it.
class FileLabel : public QLabel
{
public:
    FileLabel(QString const& sentence, QString const& file, QWidget* parent)
        : QLabel(sentence.arg(file), parent), m_sentence(sentence), m_file(file)
    {
        setObjectName(QStringLiteral("labelFile"));
        setTextFormat(Qt::PlainText); // a file name may look like markup
        setToolTip(Qt::convertFromPlainText(file));
    }

    QSize minimumSizeHint() const override
    {
        QString const least = m_sentence.arg(QChar(0x2026));
        return QSize(fontMetrics().horizontalAdvance(least), QLabel::minimumSizeHint().height());
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        int const room = width() - fontMetrics().horizontalAdvance(m_sentence.arg(QString()));
        QString const shown = fontMetrics().elidedText(m_file, Qt::ElideLeft, room);
        QPainter painter(this);
        style()->drawItemText(&painter, rect(), alignment() | Qt::TextSingleLine, palette(),
                              isEnabled(), m_sentence.arg(shown), foregroundRole());
    }

private:
    QString m_sentence;
    QString m_file;
};

} // namespace

ReloadBanner::ReloadBanner(CheckType type, QString fileName, QWidget* parent) : QWidget(parent)
{
    initImages();
    auto* const label = new QLabel(this);
    label->setObjectName(QStringLiteral("label"));
    label->setPixmap(QPixmap(QStringLiteral(":/vek/image/warning.png")));

    QString const sentence = type == Changed
                                 ? QStringLiteral("Vek file '%1' has been changed on disk.")
                                 : QStringLiteral("Vek file '%1' has been removed on disk.");
    auto* const labelFile = new FileLabel(sentence, fileName, this);

    QString const caption = type == Changed ? QStringLiteral("Reload") : QStringLiteral("Close");
    auto* const btnA = new QPushButton(caption, this);
    btnA->setObjectName(QStringLiteral("btnA"));
    connect(btnA, &QPushButton::clicked, this,
            type == Changed ? &ReloadBanner::reload : &ReloadBanner::closeIt);

    auto* const layout = new QHBoxLayout(this);
    layout->addWidget(label);
    layout->addWidget(labelFile);
    layout->addStretch();
    layout->addWidget(btnA);
}

} // namespace VEK
