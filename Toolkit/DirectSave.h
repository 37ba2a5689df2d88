// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>
#include <QUrl>
#include <cstdint>

/// The source's side of the direct-save protocol of drags between X11 windows, version 0.
///
/// The source announces the name of a file in the property XdndDirectSave0 of its window and offers a type of
/// that name. At the drop the target puts the URL that it wants in the property and asks for data of that
/// type; the source saves the file there before it answers with one of the codes below.
class DirectSave
{
public:
    static inline const QString format = QStringLiteral("XdndDirectSave0");
    static inline const QByteArray saved = QByteArrayLiteral("S");
    /// The source cannot save there; the target may try another type.
    static inline const QByteArray unsupported = QByteArrayLiteral("F");
    static inline const QByteArray failed = QByteArrayLiteral("E");

    /// Only windows of X11 have properties.
    static bool isAvailable();

    /// Puts \a name on the window that the drag in progress comes from.
    void announce(const QString &name);
    /// Where the target wants the file; invalid if it did not say.
    QUrl wantedUrl() const;

private:
    /// None before the announcement.
    std::uint32_t window_ = 0;
};
