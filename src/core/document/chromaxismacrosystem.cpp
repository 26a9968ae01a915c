#include "document/chromaxismacrosystem.h"

#include "palette/describedexception.h"
#include "formats/writefileatomically.h"

#include <QFile>
#include <QLoggingCategory>
#include <QStringList>

namespace {
Q_LOGGING_CATEGORY(macroLog, "chromaxis.macro", QtWarningMsg)

const QByteArray fileHeader = "chromaxis-macro 1";
const QString stepPrefix = QStringLiteral("%step ");
constexpr qint64 maxMacroFileSize = 64 * 1024 * 1024;
} // namespace

ChromaxisMacroSystem::~ChromaxisMacroSystem()
{
    clear();
}

void ChromaxisMacroSystem::addMacroAction(ChromaxisMacroAction *action)
{
    qCDebug(macroLog) << "addUndoAction1:" << m_position << m_actions.size();
    if (action->name() == QLatin1String("undo")) {
        undo();
        delete action;
        return;
    }
    if (action->name() == QLatin1String("redo")) {
        redo();
        delete action;
        return;
    }
    qCDebug(macroLog) << "addUndoAction2:" << m_position << m_actions.size();
    while (int(m_actions.size()) > m_position) {
        delete m_actions.back();
        m_actions.pop_back();
    }
    m_actions.push_back(action);
    ++m_position;
    qCDebug(macroLog) << "addUndoAction3:" << m_position << m_actions.size();
}

void ChromaxisMacroSystem::insertAtPosition(ChromaxisMacroAction *action)
{
    m_actions.insert(m_actions.begin() + m_position, action);
    ++m_position;
}

bool ChromaxisMacroSystem::undo()
{
    qCDebug(macroLog) << "undo1:" << m_position << m_actions.size();
    if (m_position <= 0)
        return false;
    --m_position;
    qCDebug(macroLog) << "undo2:" << m_position << m_actions.size();
    return true;
}

bool ChromaxisMacroSystem::redo()
{
    qCDebug(macroLog) << "redo1:" << m_position << m_actions.size();
    if (m_position >= int(m_actions.size()))
        return false;
    ++m_position;
    qCDebug(macroLog) << "redo2:" << m_position << m_actions.size();
    return true;
}

void ChromaxisMacroSystem::clear()
{
    for (auto it = m_actions.rbegin(); it != m_actions.rend(); ++it)
        delete *it;
    m_actions.clear();
    m_position = 0;
}

void ChromaxisMacroSystem::setPosition(int position)
{
    m_position = qBound(0, position, int(m_actions.size()));
}

std::vector<const ChromaxisMacroAction *> ChromaxisMacroSystem::effectiveSteps() const
{
    return {m_actions.begin(), m_actions.begin() + m_position};
}

namespace MacroFile {

QByteArray encode(const std::vector<Step> &steps)
{
    QByteArray out = fileHeader + '\n';
    for (const Step &step : steps) {
        out += (stepPrefix + step.name).toUtf8() + '\n';
        QStringList lines = step.parameters.split('\n');
        if (!lines.isEmpty() && lines.last().isEmpty())
            lines.removeLast(); // the final line end of the parameters
        for (const QString &line : lines)
            out += (line.startsWith('%') ? QStringLiteral("%") + line : line).toUtf8() + '\n';
    }
    return out;
}

std::vector<Step> decode(const QByteArray &text, const QString &path)
{
    const QString title = QStringLiteral("Error on reading macro");
    QStringList lines = QString::fromUtf8(text).split('\n');
    for (QString &line : lines)
        if (line.endsWith('\r'))
            line.chop(1);
    if (lines.isEmpty() || lines.first() != QLatin1String(fileHeader))
        throw DescribedException(title, QStringLiteral("The file\n'%1'\nis not a macro file.").arg(path));
    std::vector<Step> steps;
    for (int i = 1; i < lines.size(); ++i) {
        const QString &line = lines[i];
        if (line.startsWith(stepPrefix)) {
            const QString name = line.mid(stepPrefix.size()).trimmed();
            if (name.isEmpty())
                throw DescribedException(title,
                                         QStringLiteral("A step without a name in line %1 of\n'%2'.").arg(i + 1).arg(path));
            steps.push_back({name, QString()});
        } else if (line.startsWith(QLatin1String("%%"))) {
            if (steps.empty())
                throw DescribedException(title, QStringLiteral("Parameters before the first step in\n'%1'.").arg(path));
            steps.back().parameters += line.mid(1) + '\n';
        } else if (line.startsWith('%')) {
            throw DescribedException(title, QStringLiteral("Unknown line %1 in\n'%2'.").arg(i + 1).arg(path));
        } else if (!line.isEmpty() || i + 1 < lines.size()) {
            if (steps.empty()) {
                if (line.isEmpty())
                    continue;
                throw DescribedException(title, QStringLiteral("Parameters before the first step in\n'%1'.").arg(path));
            }
            steps.back().parameters += line + '\n';
        }
    }
    return steps;
}

void write(const QString &path, const std::vector<Step> &steps)
{
    const FileWriteResult written = writeFileAtomically(path, encode(steps));
    if (written.stage == FileWriteResult::NotOpened)
        throw DescribedException(QStringLiteral("Error on writing macro"),
                                 QStringLiteral("The destination file\n'%1'\ncould not be built.\n%2")
                                     .arg(path, written.error));
    if (!written.ok())
        throw DescribedException(QStringLiteral("Could not save"),
                                 QStringLiteral("Unable to save macro under\n%1.\n%2").arg(path, written.error));
}

std::vector<Step> read(const QString &path)
{
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        throw DescribedException(QStringLiteral("Error on reading macro"),
                                 QStringLiteral("Could not open file\n'%1'.").arg(path));
    if (f.size() > maxMacroFileSize)
        throw DescribedException(QStringLiteral("Error on reading macro"),
                                 QStringLiteral("The file\n'%1'\nis too large for a macro.").arg(path));
    return decode(f.readAll(), path);
}

std::vector<Step> stepsOf(const ChromaxisMacroSystem &macros)
{
    std::vector<Step> steps;
    for (const ChromaxisMacroAction *a : macros.effectiveSteps())
        steps.push_back({a->name(), a->parameters()});
    return steps;
}

} // namespace MacroFile
