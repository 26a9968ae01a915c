#include "formats/librarymessages.h"

#include <QtGlobal>

#include <gd.h>

#include <cstdarg>
#include <cstring>

namespace {

QtMessageHandler forwardTo = nullptr;

bool isOurs(const QMessageLogContext &context)
{
    return context.category && std::strncmp(context.category, "chromaxis", 9) == 0;
}

void filterMessage(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    const bool chatter = type == QtDebugMsg || type == QtInfoMsg || type == QtWarningMsg;
    if (chatter && !isOurs(context))
        return;
    forwardTo(type, context, message);
}

void dropGdMessage(int, const char *, va_list) {}

} // namespace

void quietLibraryMessages()
{
    if (qEnvironmentVariableIntValue("CHROMAXIS_LIBRARY_MESSAGES") == 1)
        return;
    gdSetErrorMethod(dropGdMessage);
    if (!forwardTo)
        forwardTo = qInstallMessageHandler(filterMessage);
}
