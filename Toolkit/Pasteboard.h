// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QStringList>
#include <QVariant>

class QMimeData;

namespace PasteboardType {
/// The property list is an array of file extensions: files of these kinds are written when they are dropped.
inline const QString filesPromise = QStringLiteral("application/x-files-promise");
/// The property list is an array of local paths.
inline const QString filenames = QStringLiteral("text/uri-list");
} // namespace PasteboardType

/// The typed data of a drag, as a view of QMimeData; the type names are the formats' names.
///
/// Whatever is read may come from any program: nothing about its content is promised.
class Pasteboard
{
public:
    /// For writing and reading; \a data is not owned.
    explicit Pasteboard(QMimeData &data);
    /// For reading only: what writes has no effect.
    explicit Pasteboard(const QMimeData &data);

    /// Forgets all there is, announces \a types in this order, and marks the data as this process's own.
    void declareTypes(const QStringList &types);
    void setDataForType(const QByteArray &data, const QString &type);
    /// \a value consists of what PropertyList can write; else nothing is set.
    void setPropertyListForType(const QVariant &value, const QString &type);

    /// In the order in which they were declared.
    QStringList types() const;
    /// Whether the type is on offer. Fetches nothing, so it costs the program that it comes from nothing.
    bool hasDataForType(const QString &type) const;
    /// Null if there is none.
    QByteArray dataForType(const QString &type) const;
    /// Invalid if there is none, or what is there is no property list. PasteboardType::filenames leaves out
    /// what is not a file of this machine.
    QVariant propertyListForType(const QString &type) const;
    /// Whether this very process declared the types, so that positions in its own lists mean something.
    bool isFromThisProcess() const;

private:
    const QMimeData *data_;
    QMimeData *writableData_;
};
