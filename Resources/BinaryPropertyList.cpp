// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// For the build: writes a property list that people edit in the form that is read fastest.
// usage: quenby-binary-property-list FROM TO

#include "Platform/LineText.h"
#include "Platform/PropertyLists/BinaryPropertyListWriter.h"
#include "Platform/PropertyLists/PropertyListDocument.h"

#include <QFile>
#include <cstdio>
#include <cstdlib>

namespace {

int fail(const QString &path, const QString &reason)
{
    std::fputs(qPrintable(lineText(path + QStringLiteral(": ") + reason) + u'\n'), stderr);
    return EXIT_FAILURE;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 3)
        return fail(QStringLiteral("usage"), QStringLiteral("quenby-binary-property-list FROM TO"));
    QFile from(QFile::decodeName(argv[1]));
    QFile to(QFile::decodeName(argv[2]));
    if (!from.open(QIODevice::ReadOnly))
        return fail(from.fileName(), from.errorString());
    QString error;
    const PropertyListDocument::Ptr document = PropertyListDocument::parse(from.readAll(), &error);
    if (!document)
        return fail(from.fileName(), error);
    BinaryPropertyListWriter writer;
    const PropertyList::WriteResult written = writer.finish(writer.value(document->root()));
    if (!written)
        return fail(from.fileName(), written.error);
    if (!to.open(QIODevice::WriteOnly) || to.write(*written.bytes) != written.bytes->size() || !to.flush())
        return fail(to.fileName(), to.errorString());
    return EXIT_SUCCESS;
}
