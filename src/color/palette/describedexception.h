#pragma once

#include <QString>

#include <exception>

// A failure with a title for the message box and a message for its text. Readers, writers and
// parsers throw it; the GUI shows it as it is, the command line prints "TITLE: MESSAGE".
class DescribedException : public std::exception
{
public:
    DescribedException(QString title, QString message)
        : m_title(std::move(title)), m_message(std::move(message)), m_what((m_title + ": " + m_message).toUtf8())
    {
    }

    const QString &title() const { return m_title; }
    const QString &message() const { return m_message; }
    const char *what() const noexcept override { return m_what.constData(); }

private:
    QString m_title;
    QString m_message;
    QByteArray m_what;
};

// What a command that ran out of memory reports, in words rather than as "std::bad_alloc".
inline DescribedException outOfMemoryFailure()
{
    return DescribedException(QStringLiteral("Out of memory"),
                              QStringLiteral("There is not enough memory to carry out the command."));
}

// A value as a message quotes it: a message names what it refuses, it need not repeat a hostile
// megabyte of it. Longer values keep their first characters and end in "...".
inline QString elidedValue(const QString &value)
{
    constexpr int shown = 80;
    return value.size() > shown ? value.left(shown) + QStringLiteral("...") : value;
}
