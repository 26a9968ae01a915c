// Text exports for web pages: an HTML table, CSS rules and a JavaScript array. None of them is read
// back.

#include "formats/paletteformatio.h"
#include "formats/paletteformats.h"

#include <QFileInfo>

namespace PaletteFormatIO {

QByteArray writeHtml(const Palette<uint> &palette, const QString &path)
{
    const int n = palette.size();
    const QString span = QString::number(qMax(1, n));
    const QString name = palette.property(PaletteName);
    QString html =
        QStringLiteral("<table border=\"0\" cellspacing=\"0\" cellpadding=\"0\" width=\"100%\">\n");
    html += QStringLiteral("<tr><th colspan=\"") + span + QStringLiteral("\">Palette");
    if (!name.isEmpty())
        html += QLatin1Char(' ') + name.toHtmlEscaped();
    html += QStringLiteral(" (") + QString::number(n) + QStringLiteral(" entries)</th></tr>\n<tr>\n");
    for (const RGBAColor<uint> &c : palette.entries())
        html += QStringLiteral("<td bgcolor=\"#") + hexColor(c) + QStringLiteral("\">&nbsp;</td>\n");
    html += QStringLiteral("</tr>\n<tr><td colspan=\"") + span + QStringLiteral("\">file: ") +
            QFileInfo(path).fileName().toHtmlEscaped() + QStringLiteral("</td></tr>\n</table>\n");
    return html.toUtf8();
}

QByteArray writeCss(const Palette<uint> &palette, const ExportOptions &options)
{
    const QString name = options.string(QStringLiteral("css.name"));
    const QString attribute = options.string(QStringLiteral("css.attribute"));
    QString css;
    for (int i = 0; i < palette.size(); ++i)
        css += name + QString::number(i) + QStringLiteral(" { ") + attribute + QStringLiteral(": #") +
               hexColor(palette[i]) + QStringLiteral("; }\n");
    return css.toUtf8();
}

QByteArray writeJavaScript(const Palette<uint> &palette, const ExportOptions &options)
{
    const QString type = options.string(QStringLiteral("js.type"));
    if (type != QLatin1String("triplet") && type != QLatin1String("hex") && type != QLatin1String("rgb"))
        failExport(QStringLiteral("'") + type +
                   QStringLiteral("' is not an allowed attribute for the 'js.type' option (exception should "
                                  "have been checked before)."));
    QStringList items;
    for (const RGBAColor<uint> &c : palette.entries()) {
        const QString r = QString::number(byteOf(c.r));
        const QString g = QString::number(byteOf(c.g));
        const QString b = QString::number(byteOf(c.b));
        if (type == QLatin1String("triplet"))
            items << QStringLiteral("[%1, %2, %3]").arg(r, g, b);
        else if (type == QLatin1String("hex"))
            items << QStringLiteral("\"#") + hexColor(c) + QLatin1Char('"');
        else
            items << QStringLiteral("\"rgb(%1, %2, %3)\"").arg(r, g, b);
    }
    const QString js = QStringLiteral("var ") + options.string(QStringLiteral("js.name")) +
                       QStringLiteral(" = [") + items.join(QStringLiteral(", ")) + QStringLiteral("];\n");
    return js.toUtf8();
}

} // namespace PaletteFormatIO
