// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QHash>
#include <QVariant>
#include <optional>

/// The large or shared parts of values that a writer has stored already, known by their place in memory: what
/// is shared there is hashed, encoded and stored once, however often it is referred to.
///
/// Each part is held on to, so that its place cannot become another part's.
class KnownParts
{
public:
    using Ref = quint32;

    /// A shorter text or data is compared with what is stored faster than it is found here.
    static constexpr qsizetype smallest = 256;

    KnownParts() = default;
    ~KnownParts();
    KnownParts(KnownParts &&) = default;
    KnownParts &operator=(KnownParts &&) = default;
    KnownParts(const KnownParts &) = delete;
    KnownParts &operator=(const KnownParts &) = delete;

    /// Where the part stands in memory; null for one that need not be known: a small text or data, one whose
    /// bytes belong to somebody else, a container that nobody shares, a number.
    static const void *identity(const QString &text);
    static const void *identity(const QByteArray &data);
    static const void *identity(const QVariant &value);

    /// None for a null \a identity.
    std::optional<Ref> find(const void *identity) const;
    /// Does nothing for a null \a identity, which must be the value's.
    void add(const void *identity, const QVariant &value, Ref ref);
    /// Forgets what has this reference or a greater one.
    void forgetFrom(Ref ref);

private:
    struct Part
    {
        QVariant value;
        Ref ref = 0;
    };

    QHash<const void *, Part> parts_;
};
