// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/PropertyLists/KeyedArchiver.h"
#include "Platform/PropertyLists/KeyedUnarchiver.h"
#include "Tests/Exchange/ArchivePeer.h"
#include "Tests/Platform/PropertyLists/TaggedContent.h"

#include <gtest/gtest.h>

using PropertyList::Form;
using TaggedContent::canonical;

namespace {

QVariantMap item(const QString &name, const QVariantList &children = {})
{
    QVariantMap result{{QStringLiteral("filename"), name},
                       {QStringLiteral("color"), QStringLiteral("red")},
                       {QStringLiteral("permissions"), QStringLiteral("764")}};
    if (!children.isEmpty()) {
        result.insert(QStringLiteral("isFolder"), true);
        result.insert(QStringLiteral("children"), children);
    }
    return result;
}

/// A preset's record with a value of each type that every writer keeps.
QVariantMap record()
{
    return {
        {QStringLiteral("label"), QStringLiteral("Web project \u65e5\u672c e\u0301")},
        {QStringLiteral("scriptFile"), QStringLiteral("setup.sh")},
        {QStringLiteral("presetDescription"), QStringLiteral("Two\nlines & <more>")},
        {QStringLiteral("fileHierarchy"),
         item(QStringLiteral("{name}"), {item(QStringLiteral("src"), {item(QStringLiteral("main.c"))}),
                                         item(QStringLiteral("README")), item(QStringLiteral("src"))})},
        {QStringLiteral("extraTrue"), true},
        {QStringLiteral("extraFalse"), false},
        {QStringLiteral("extraInteger"), 7LL},
        {QStringLiteral("extraNegative"), -70000LL},
        {QStringLiteral("extraLarge"), qlonglong(1) << 40},
        {QStringLiteral("extraReal"), 2.5},
        {QStringLiteral("extraDate"), QDateTime(QDate(2020, 2, 29), QTime(12, 34, 56), Qt::UTC)},
        {QStringLiteral("extraData"), QByteArray("\x00\x01\xfe\xff", 4)},
        {QStringLiteral("extraEmpty"), QVariantList{QString(), QVariantList(), QVariantMap(), QByteArray()}},
        {QStringLiteral("extraList"),
         QVariantList{1LL, QVariantMap{{QStringLiteral("k"), QVariantList{2LL}}}}},
    };
}

/// What only some of the other writers keep.
QVariantMap recordForReaders()
{
    QVariantMap result = record();
    result.insert(QStringLiteral("extraAstral"), QStringLiteral("\U0001f600"));
    result.insert(QStringLiteral("extraFineDate"),
                  QDateTime(QDate(2020, 2, 29), QTime(12, 34, 56, 500), Qt::UTC));
    return result;
}

class KeyedArchiveExchange : public ::testing::Test
{
protected:
    void expectRead(const QString &program, const QStringList &arguments, const QVariant &content) const
    {
        const PropertyList::WriteResult ours = KeyedArchiver::archivedDataWithRootObject(content);
        ASSERT_TRUE(ours) << ours.error.toStdString();
        peer_.write(QStringLiteral("ours"), *ours.bytes);
        const std::optional<QVariant> read = TaggedContent::fromJson(
            peer_.outputOf(program, arguments + QStringList{peer_.path(QStringLiteral("ours"))}));
        ASSERT_TRUE(read);
        EXPECT_EQ(canonical(*read).toStdString(), canonical(content).toStdString());
    }

    void expectWritten(const QString &form, const QString &kind, const QVariant &content) const
    {
        const PropertyList::WriteResult list = PropertyList::write(content, Form::XML);
        ASSERT_TRUE(list) << list.error.toStdString();
        peer_.write(QStringLiteral("content.plist"), *list.bytes);
        peer_.outputOf(QStringLiteral(QUENBY_ARCHIVE_TOOL),
                       {QStringLiteral("write"), form, kind, peer_.path(QStringLiteral("content.plist")),
                        peer_.path(QStringLiteral("theirs"))});
        QString error;
        const PropertyListDocument::Ptr document =
            KeyedUnarchiver::unarchivedDocumentWithFile(peer_.path(QStringLiteral("theirs")), &error);
        ASSERT_TRUE(document) << error.toStdString();
        EXPECT_EQ(canonical(document->root().toVariant()).toStdString(), canonical(content).toStdString());
    }

    ArchivePeer peer_;
};

} // namespace

TEST_F(KeyedArchiveExchange, OurArchiveIsReadByGNUstep)
{
    expectRead(QStringLiteral(QUENBY_ARCHIVE_TOOL), {QStringLiteral("read")}, recordForReaders());
}

TEST_F(KeyedArchiveExchange, OurArchiveHasTheLayoutOfTheOriginalPlatform)
{
    QVariantMap content = recordForReaders();
    // GNUstep's reader takes both for no object at all, and fails.
    content.insert(QStringLiteral("extraMarker"), QStringLiteral("$null"));
    content.insert(QStringLiteral("extraNull"), QVariantList{QVariant(), QStringLiteral("x")});
    expectRead(QStringLiteral(QUENBY_PYTHON), {QStringLiteral(QUENBY_ARCHIVE_READER)}, content);
}

TEST_F(KeyedArchiveExchange, OurArchiveOfManyItemsIsReadByOthers)
{
    QVariantList children;
    for (int i = 0; i < 10'000; ++i)
        children.append(item(QStringLiteral("file %1").arg(i)));
    const QVariantMap content{{QStringLiteral("label"), QStringLiteral("many")},
                              {QStringLiteral("fileHierarchy"), item(QString(), children)}};
    expectRead(QStringLiteral(QUENBY_ARCHIVE_TOOL), {QStringLiteral("read")}, content);
    expectRead(QStringLiteral(QUENBY_PYTHON), {QStringLiteral(QUENBY_ARCHIVE_READER)}, content);
}

TEST_F(KeyedArchiveExchange, GNUstepsBinaryArchiveIsReadByUs)
{
    QVariantMap content = record();
    content.insert(QStringLiteral("extraAstral"), QStringLiteral("\U0001f600"));
    expectWritten(QStringLiteral("binary"), QStringLiteral("plain"), content);
    expectWritten(QStringLiteral("binary"), QStringLiteral("mutable"), content);
}

TEST_F(KeyedArchiveExchange, GNUstepsXmlArchiveIsReadByUs)
{
    expectWritten(QStringLiteral("xml"), QStringLiteral("plain"), record());
    expectWritten(QStringLiteral("xml"), QStringLiteral("mutable"), record());
}

TEST_F(KeyedArchiveExchange, GNUstepsXmlArchiveOfManyItemsIsReadByUs)
{
    QVariantList children;
    for (int i = 0; i < 2'000; ++i)
        children.append(item(QStringLiteral("file %1").arg(i)));
    expectWritten(QStringLiteral("xml"), QStringLiteral("plain"),
                  QVariantMap{{QStringLiteral("fileHierarchy"), item(QString(), children)}});
}
