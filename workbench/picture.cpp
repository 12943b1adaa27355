#include "workbench/picture.h"

#include "results/wholefile.h"

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

bool paintOn(QPaintDevice& device, QWidget& widget)
{
    QPainter painter;
    if (!painter.begin(&device))
        return false;
    widget.render(&painter);
    return painter.end();
}

bool writeSvg(QWidget& widget, QIODevice& file)
{
    QSvgGenerator svg;
    svg.setOutputDevice(&file);
    svg.setResolution(ScreenDpi);
    svg.setSize(widget.size());
    svg.setViewBox(QRect(QPoint(), widget.size()));
    return paintOn(svg, widget);
}

bool writePdf(QWidget& widget, QIODevice& file)
{
    QPdfWriter pdf(&file);
    pdf.setResolution(ScreenDpi);
    pdf.setPageSize(QPageSize(QSizeF(widget.size()) * PointsPerInch / ScreenDpi, QPageSize::Point,
                              QString(), QPageSize::ExactMatch));
    pdf.setPageMargins(QMarginsF());
    return paintOn(pdf, widget);
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
