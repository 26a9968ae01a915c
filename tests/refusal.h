#pragma once

#include "palette/describedexception.h"

#include <QString>

#include <functional>

// What a refused call tells the user, as "title: message", or "accepted" when the call goes
// through: one comparison then checks that it failed, under which title and in which words.
inline QString refusal(const std::function<void()> &call)
{
    try {
        call();
    } catch (const DescribedException &e) {
        return e.title() + QStringLiteral(": ") + e.message();
    }
    return QStringLiteral("accepted");
}
