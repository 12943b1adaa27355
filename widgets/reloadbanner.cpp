#include "widgets/reloadbanner.h"

#include "widgets/images.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPixmap>
#include <QPushButton>

namespace VEK {

ReloadBanner::ReloadBanner(CheckType type, QString fileName, QWidget* parent) : QWidget(parent)
{
    initImages();
    auto* const label = new QLabel(this);
    label->setObjectName(QStringLiteral("label"));
    label->setPixmap(QPixmap(QStringLiteral(":/vek/image/warning.png")));

    QString const text = type == Changed
                             ? QStringLiteral("Vek file '%1' has been changed on disk.")
                             : QStringLiteral("Vek file '%1' has been removed on disk.");
    auto* const labelFile = new QLabel(text.arg(fileName), this);
    labelFile->setObjectName(QStringLiteral("labelFile"));
    labelFile->setTextFormat(Qt::PlainText); // a file name may look like markup

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
