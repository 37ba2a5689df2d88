// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>
#include <optional>

/// The main group of a desktop entry, after freedesktop's Desktop Entry Specification, read as generously as
/// the programs that start entries read them. Values are bytes: the format wants UTF-8, files do not
/// always know.
class DesktopEntry
{
public:
    /// None if \a bytes are no desktop entry, with the reason in \a error.
    static std::optional<DesktopEntry> parse(const QByteArray &bytes, QString *error);

    /// The string under \a key with its escapes resolved; empty if there is none.
    QByteArray string(const QByteArray &key) const;
    bool boolean(const QByteArray &key) const;
    bool contains(const QByteArray &key) const { return values_.contains(key); }

    /// What the command line of "Exec" starts, its quoting resolved; empty if it names nothing of its own.
    QByteArray program() const;

    /// Appends what another entry would say to start it: a line of \a key with the string \a value.
    static void appendString(QByteArray &entry, const QByteArray &key, const QByteArray &value);

    /// A string for a key of the main group; without one its lines go.
    struct Change
    {
        QByteArray key;
        std::optional<QByteArray> value;
    };
    /// The entry \a bytes with \a changes, each where the key stands, else after the last line of the main
    /// group, in their order; every other line is as it was. Bytes without that group begin with it.
    static QByteArray changed(const QByteArray &bytes, const QList<Change> &changes);

    /// \a argument as a part of a command line.
    static QByteArray quoted(const QByteArray &argument);

private:
    QHash<QByteArray, QByteArray> values_;
};

/// The keys and their group, as entries name them.
namespace DesktopEntryKeys {
inline constexpr char group[] = "Desktop Entry";
inline constexpr char type[] = "Type";
inline constexpr char version[] = "Version";
inline constexpr char name[] = "Name";
inline constexpr char comment[] = "Comment";
inline constexpr char icon[] = "Icon";
inline constexpr char exec[] = "Exec";
inline constexpr char tryExec[] = "TryExec";
inline constexpr char hidden[] = "Hidden";
/// Of entries that start with the session: with "false" some desktops switch them off.
inline constexpr char autostartEnabled[] = "X-GNOME-Autostart-enabled";
} // namespace DesktopEntryKeys
