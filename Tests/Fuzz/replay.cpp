// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Fuzz/RandomRecords.h"

#include <QDir>
#include <QFile>
#include <cstdint>
#include <cstdio>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

/// How many records are made up; the same each time.
static constexpr unsigned madeUp = 100;

static void run(const QByteArray &bytes)
{
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(bytes.constData()),
                           std::size_t(bytes.size()));
}

/// Gives every file of the folder, and records that are made up, to the fuzz target this is linked with,
/// which ends the process if it finds something.
int main(int argc, char **argv)
{
    const QDir folder(QFile::decodeName(argc == 2 ? argv[1] : ""));
    const QStringList names = folder.entryList(QDir::Files, QDir::Name);
    for (const QString &name : names) {
        QFile file(folder.filePath(name));
        if (!file.open(QIODevice::ReadOnly)) {
            std::fprintf(stderr, "%s cannot be read\n", qPrintable(file.fileName()));
            return 1;
        }
        std::printf("%s\n", qPrintable(name));
        std::fflush(stdout); // the last name printed is the one that fails
        run(file.readAll());
    }
    for (unsigned seed = 0; seed < madeUp; ++seed) {
        std::printf("made up from %u\n", seed);
        std::fflush(stdout);
        RandomRecords records(seed);
        for (const RandomRecords::Document &document :
             {records.domain(), records.bareArchive(), records.archive()}) {
            run(document.xml);
            run(document.binary);
        }
    }
    return names.isEmpty() ? 1 : 0;
}
