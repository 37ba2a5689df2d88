// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/PropertyLists/PropertyListVariant.h"

#include <QProcess>
#include <cstdlib>
#include <gtest/gtest.h>
#include <plist/plist.h>

using PropertyList::Form;

namespace {

/// What every program at hand keeps.
QVariantMap everydayValues()
{
    QVariantList many;
    for (int i = 0; i < 300; ++i)
        many.append(QStringLiteral("item %1").arg(i));
    return {{QStringLiteral("text"), QStringLiteral("gr\u00fc\u00df \U0001F4C1")},
            {QStringLiteral("yes"), true},
            {QStringLiteral("numbers"),
             QVariantList{qlonglong(0), qlonglong(256), qlonglong(70'000), qlonglong(-1)}},
            {QStringLiteral("real"), 1.5},
            {QStringLiteral("date"), PropertyList::dateValue(725'846'400)},
            {QStringLiteral("data"), QByteArray("\0\1\xff", 3)},
            {QStringLiteral("many"), many},
            {QStringLiteral("empty"), QVariantList{QVariantMap(), QVariantList()}}};
}

class PropertyListExchange : public testing::TestWithParam<Form>
{
};

/// The bytes as libplist reads and writes them again; empty if it refuses them.
QByteArray throughLibplist(const QByteArray &bytes, Form form)
{
    plist_t list = nullptr;
    const auto read = form == Form::Binary ? plist_from_bin : plist_from_xml;
    read(bytes.constData(), uint32_t(bytes.size()), &list);
    if (!list)
        return {};
    char *written = nullptr;
    uint32_t size = 0;
    if (form == Form::Binary)
        plist_to_bin(list, &written, &size);
    else
        plist_to_xml(list, &written, &size);
    const QByteArray result(written, qsizetype(size));
    std::free(written);
    plist_free(list);
    return result;
}

QByteArray throughPython(const QByteArray &bytes, Form form)
{
    QProcess python;
    python.start(QStringLiteral("/usr/bin/python3"),
                 {QStringLiteral("-c"),
                  QStringLiteral("import plistlib, sys\n"
                                 "value = plistlib.loads(sys.stdin.buffer.read())\n"
                                 "sys.stdout.buffer.write(plistlib.dumps(value, fmt=plistlib.%1))")
                      .arg(form == Form::Binary ? QStringLiteral("FMT_BINARY") : QStringLiteral("FMT_XML"))});
    python.write(bytes);
    python.closeWriteChannel();
    EXPECT_TRUE(python.waitForFinished()) << qPrintable(python.errorString());
    EXPECT_EQ(python.exitCode(), 0) << python.readAllStandardError().toStdString();
    return python.readAllStandardOutput();
}

void expectSame(const QByteArray &bytes)
{
    const PropertyList::ReadResult again = PropertyList::read(bytes);
    ASSERT_TRUE(again) << qPrintable(again.error);
    EXPECT_TRUE(PropertyList::equal(QVariant(everydayValues()), *again.value));
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Forms, PropertyListExchange, testing::Values(Form::Binary, Form::XML),
                         [](const auto &form) { return form.param == Form::Binary ? "Binary" : "XML"; });

TEST_P(PropertyListExchange, LibplistReadsOursAndWeReadItsOwn)
{
    expectSame(throughLibplist(*PropertyList::write(everydayValues(), GetParam()).bytes, GetParam()));
}

TEST_P(PropertyListExchange, PythonReadsOursAndWeReadItsOwn)
{
    expectSame(throughPython(*PropertyList::write(everydayValues(), GetParam()).bytes, GetParam()));
}
