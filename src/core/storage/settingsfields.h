#pragma once

#include "storage/settingstext.h"
#include "storage/settingsvalues.h"

#include <functional>
#include <utility>
#include <vector>

namespace SettingsKeys {

// "Selected only": the check box of every palette dialog that can work on the selection alone.
inline const QString selectedOnly = QStringLiteral("sel_only");

} // namespace SettingsKeys

// The keys of one settings struct, each declared once together with how its value is read and
// written; the struct's fromPairs and toPairs are this table's read and write. Keys are written in
// the table's order, which presets and recorded macros already hold, so a table only grows at its
// end.
//
// An accessor is a data member pointer, or a callable giving a reference into the settings for
// anything else (an array element); a generic lambda `[](auto &s) -> auto & { ... }` serves both
// the reading and the writing side.
template <class S> class SettingsFields
{
public:
    using Read = std::function<void(S &settings, const QString &key, const QString &value)>;
    using Write = std::function<QString(const S &settings)>;

    struct Field
    {
        QString key;
        Read read;
        Write write;
        // Read when given, written only on request: keys the command line gives that the dialog
        // does not store.
        bool extra = false;

        Field extraKey() const
        {
            Field f = *this;
            f.extra = true;
            return f;
        }
        // effect runs after the value is read, for a control that moves others as it is set.
        Field thenApply(std::function<void(S &)> effect) const
        {
            Field f = *this;
            f.read = [read = read, effect = std::move(effect)](S &s, const QString &key,
                                                               const QString &value) {
                read(s, key, value);
                effect(s);
            };
            return f;
        }
    };

    explicit SettingsFields(std::vector<Field> fields) : m_fields(std::move(fields)) {}

    // base with the pairs applied in order, as a dialog applies them to its controls: a later
    // pair overrides an earlier one and a key of no field is ignored. A value that cannot be read
    // throws DescribedException "Invalid settings".
    S read(const SettingsText::Pairs &pairs, S base) const
    {
        for (const auto &[key, value] : pairs)
            readOne(base, key, value);
        return base;
    }

    // Applies one pair; false when key names no field.
    bool readOne(S &settings, const QString &key, const QString &value) const
    {
        for (const Field &f : m_fields)
            if (f.key == key) {
                f.read(settings, key, value);
                return true;
            }
        return false;
    }

    // The fields in table order; the extra ones only with withExtra.
    SettingsText::Pairs write(const S &settings, bool withExtra = false) const
    {
        SettingsText::Pairs pairs;
        for (const Field &f : m_fields)
            if (withExtra || !f.extra)
                pairs.emplace_back(f.key, f.write(settings));
        return pairs;
    }

    // A value read by parse(key, value) and written by SettingsValues::text.
    template <class Access, class Parse> static Field field(const QString &key, Access access, Parse parse)
    {
        return {key,
                [access, parse](S &s, const QString &k, const QString &v) {
                    std::invoke(access, s) = parse(k, v);
                },
                [access](const S &s) { return SettingsValues::text(std::invoke(access, s)); }};
    }

    // The kinds of value the dialogs' controls hold; see SettingsValues for how each is read.
    template <class Access> static Field integer(const QString &key, Access access, int min, int max)
    {
        return field(key, access, [min, max](const QString &k, const QString &v) {
            return SettingsValues::clampedInteger(k, v, min, max);
        });
    }
    template <class Access> static Field integer(const QString &key, Access access)
    {
        return field(key, access, &SettingsValues::integer);
    }
    template <class Access> static Field number(const QString &key, Access access, double min, double max)
    {
        return field(key, access, [min, max](const QString &k, const QString &v) {
            return SettingsValues::clampedNumber(k, v, min, max);
        });
    }
    template <class Access> static Field listPosition(const QString &key, Access access, int count)
    {
        return field(key, access, [count](const QString &k, const QString &v) {
            return SettingsValues::listPosition(k, v, count);
        });
    }
    template <class Access> static Field flag(const QString &key, Access access)
    {
        return field(key, access, &SettingsValues::flag);
    }
    template <class Access> static Field colour(const QString &key, Access access)
    {
        return field(key, access, &SettingsValues::colour);
    }
    template <class Access> static Field colourSpace(const QString &key, Access access)
    {
        return field(key, access, &SettingsValues::colourSpace);
    }
    template <class Access> static Field unsignedWord(const QString &key, Access access)
    {
        return field(key, access, &SettingsValues::unsignedWord);
    }
    // Text taken as it stands: names and paths.
    template <class Access> static Field text(const QString &key, Access access)
    {
        return field(key, access, [](const QString &, const QString &v) { return v; });
    }
    template <class Access> static Field selectedOnly(Access access)
    {
        return flag(SettingsKeys::selectedOnly, access);
    }

private:
    std::vector<Field> m_fields;
};
