#include "generators/shadersource.h"

#include <QFile>
#include <QRegularExpression>
#include <QStringList>

namespace ShaderSource {

namespace {

bool resolve(const QString &resource, QStringList &open, QByteArray &out, QString *error)
{
    if (open.contains(resource)) {
        if (error)
            *error = QStringLiteral("The shader %1 includes itself.").arg(resource);
        return false;
    }
    QFile file(resource);
    if (!file.open(QIODevice::ReadOnly)) {
        if (error)
            *error = QStringLiteral("The shader %1 does not exist.").arg(resource);
        return false;
    }
    open << resource;
    static const QRegularExpression include(QString::fromLatin1(R"re(^\s*#include\s+"([^"]+)"\s*$)re"));
    const QByteArray text = file.readAll();
    for (const QByteArray &line : text.split('\n')) {
        const QRegularExpressionMatch m = include.match(QString::fromUtf8(line));
        if (m.hasMatch()) {
            if (!resolve(QStringLiteral(":res/shader/") + m.captured(1), open, out, error))
                return false;
        } else {
            out += line;
            out += '\n';
        }
    }
    open.removeLast();
    return true;
}

} // namespace

QByteArray load(const QString &resource, QString *error)
{
    QStringList open;
    QByteArray out;
    if (!resolve(resource, open, out, error))
        return {};
    return out;
}

} // namespace ShaderSource
