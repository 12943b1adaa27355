#include "workbench/picture.h"

#include "results/wholefile.h"

#include <QBuffer>
#include <QDomDocument>
#include <QFileInfo>
#include <QPainter>
#include <QPdfWriter>
#include <QRegularExpression>
#include <QSvgGenerator>
#include <QWidget>

namespace {

constexpr int ScreenDpi = 96;
constexpr int PointsPerInch = 72;

QString endingOf(QString const& path)
{
    return QFileInfo(path).suffix().toLower();
}

QList<QWidget*> visibleParts(QWidget const& widget)
{
    QList<QWidget*> parts;
    for (QObject* const child : widget.children()) {
        auto* const part = qobject_cast<QWidget*>(child);
        if (part && part->isVisible() && !part->isWindow() && !part->size().isEmpty())
            parts << part;
    }
    return parts;
}

/// What a widget paints beyond its border is not seen on a screen. `origin` and `clip` are on the
/// page.
void paintClipped(QPainter& painter, QWidget& widget, QPoint const& origin, QRect const& clip,
                  QWidget::RenderFlags flags)
{
    painter.save();
    painter.setClipRect(clip);
    painter.translate(origin);
    widget.render(&painter, QPoint(), QRegion(), flags);
    painter.restore();
    for (QWidget* const part : visibleParts(widget)) {
        QPoint const corner = origin + part->pos();
        paintClipped(painter, *part, corner, clip & QRect(corner, part->size()),
                     QWidget::RenderFlags());
    }
}

bool writePdf(QWidget& widget, QIODevice& file)
{
    QPdfWriter pdf(&file);
    pdf.setResolution(ScreenDpi);
    pdf.setPageSize(QPageSize(QSizeF(widget.size()) * PointsPerInch / ScreenDpi, QPageSize::Point,
                              QString(), QPageSize::ExactMatch));
    pdf.setPageMargins(QMarginsF());
    QPainter painter;
    if (!painter.begin(&pdf))
        return false;
    paintClipped(painter, widget, QPoint(), widget.rect(), QWidget::DrawWindowBackground);
    return painter.end();
}

void unscaleLine(QDomElement line, QTransform const& map)
{
    if (line.tagName() != QLatin1String("polyline")) {
        line.setAttribute(QStringLiteral("transform"), QStringLiteral("matrix(%1,0,0,%2,%3,%4)")
                                                           .arg(map.m11())
                                                           .arg(map.m22())
                                                           .arg(map.dx())
                                                           .arg(map.dy()));
        return;
    }
    QStringList mapped;
    QStringList const points =
        line.attribute(QStringLiteral("points")).split(QLatin1Char(' '), Qt::SkipEmptyParts);
    for (QString const& point : points) {
        QPointF const place = map.map(QPointF(point.section(QLatin1Char(','), 0, 0).toDouble(),
                                              point.section(QLatin1Char(','), 1).toDouble()));
        mapped << QStringLiteral("%1,%2").arg(place.x()).arg(place.y());
    }
    line.setAttribute(QStringLiteral("points"), mapped.join(QLatin1Char(' ')));
}

/// Lines are as thin at any scale, but not every reader of SVG knows that of a stroke. So groups of
/// them lose their scale.
void unscaleLines(QDomElement const& root)
{
    static QRegularExpression const scale(
        QStringLiteral("\\Amatrix\\(([^,]+),0,0,([^,]+),([^,]+),([^,]+)\\)\\z"));
    QDomNodeList const groups = root.elementsByTagName(QStringLiteral("g"));
    for (int i = 0; i < groups.size(); ++i) {
        QDomElement group = groups.at(i).toElement();
        QString const transform = group.attribute(QStringLiteral("transform"));
        QRegularExpressionMatch const match = scale.match(transform);
        QDomElement line = group.firstChildElement();
        if (!match.hasMatch() || line.tagName() != QLatin1String("polyline"))
            continue;
        auto const number = [&](int place) { return match.captured(place).toDouble(); };
        QTransform const map(number(1), 0, 0, number(2), number(3), number(4));
        for (; !line.isNull(); line = line.nextSiblingElement())
            unscaleLine(line, map);
        group.removeAttribute(QStringLiteral("transform"));
    }
}

/// QtSvg does not clip. So each widget becomes an element of its own, which does.
QDomElement svgElement(QWidget& widget, QWidget::RenderFlags flags, QDomDocument& document)
{
    QBuffer buffer;
    buffer.open(QIODevice::ReadWrite);
    QSvgGenerator generator;
    generator.setOutputDevice(&buffer);
    generator.setResolution(ScreenDpi);
    generator.setSize(widget.size());
    generator.setViewBox(widget.rect());
    QPainter painter(&generator);
    widget.render(&painter, QPoint(), QRegion(), flags);
    painter.end();
    QDomDocument own;
    own.setContent(buffer.data());
    unscaleLines(own.documentElement());
    QDomElement element = document.importNode(own.documentElement(), true).toElement();
    element.setAttribute(QStringLiteral("x"), widget.x());
    element.setAttribute(QStringLiteral("y"), widget.y());
    element.setAttribute(QStringLiteral("width"), widget.width());
    element.setAttribute(QStringLiteral("height"), widget.height());
    for (QWidget* const part : visibleParts(widget))
        element.appendChild(svgElement(*part, QWidget::RenderFlags(), document));
    return element;
}

bool writeSvg(QWidget& widget, QIODevice& file)
{
    QDomDocument document;
    QDomElement root = svgElement(widget, QWidget::DrawWindowBackground, document);
    root.removeAttribute(QStringLiteral("x"));
    root.removeAttribute(QStringLiteral("y"));
    document.appendChild(root);
    QByteArray const text = document.toByteArray(1);
    return file.write(text) == text.size();
}

} // namespace

bool writePicture(QWidget& widget, QString const& path, QString& error)
{
    QString const ending = endingOf(path);
    if (!isPictureName(path)) {
        error = QStringLiteral("a picture is a .png, .svg or .pdf");
        return false;
    }
    auto const write = [&](QIODevice& file) {
        if (ending == QLatin1String("svg"))
            return writeSvg(widget, file);
        if (ending == QLatin1String("pdf"))
            return writePdf(widget, file);
        return widget.grab().save(&file, "PNG");
    };
    return writeWholeFile(path, write, error);
}

bool isPictureName(QString const& path)
{
    return QStringList{QStringLiteral("png"), QStringLiteral("svg"), QStringLiteral("pdf")}
        .contains(endingOf(path));
}

QSize pictureSize(QString const& text)
{
    static QRegularExpression const form(QStringLiteral("\\A(\\d{2,5})x(\\d{2,5})\\z"));
    constexpr int least = 50;
    constexpr int most = 20000;
    QRegularExpressionMatch const match = form.match(text);
    QSize const size(match.captured(1).toInt(), match.captured(2).toInt());
    bool const isInside =
        qMin(size.width(), size.height()) >= least && qMax(size.width(), size.height()) <= most;
    return isInside ? size : QSize();
}
