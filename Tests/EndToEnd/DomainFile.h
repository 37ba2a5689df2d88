// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QStringList>

/// The product's preference domain as another program writes and reads it.
class DomainFile
{
public:
    enum class Form { XML, Binary };

    explicit DomainFile(const QString &configFolder);

    /// Three presets, among much that the pane does not know.
    bool write(Form form) const;
    /// How the file differs from what a save must make of it; empty if in nothing.
    QByteArray differences() const;
    /// How two contents of the file differ; empty if in nothing.
    static QByteArray differences(const QByteArray &expected, const QByteArray &found);
    QByteArray bytes() const;
    /// The presets' labels, in their order.
    QStringList labels() const;
    /// The type and value of a key, as Python calls them; "none" for none.
    QByteArray value(const QString &key) const;
    /// Changes with every save, for a save makes another file.
    quint64 identity() const;
    QString path() const { return path_; }

private:
    QString path_;
};
