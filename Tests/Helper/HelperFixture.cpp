// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Helper/HelperFixture.h"

#include "Platform/Preferences/Preferences.h"
#include "Source/Model/QNBSettingsStore.h"

#include <QDir>
#include <QDirIterator>
#include <QEventLoop>
#include <QFile>
#include <QProcess>
#include <QTimer>

#include <csignal>
#include <sys/prctl.h>

namespace {

/// In milliseconds; for a machine with much else to do.
constexpr int longTime = 120'000;

QString paneContents(const TemporaryHome &home)
{
    return home.filePath(QStringLiteral("Quenby.prefPane/Contents"));
}

} // namespace

HelperFixture::HelperFixture()
{
    // A copy, because the helper knows by its own place where the pane is; what it reads need not be one.
    const QString contents = paneContents(home_);
    EXPECT_TRUE(QDir().mkpath(QFileInfo(program()).path()));
    EXPECT_TRUE(QFile::copy(QStringLiteral(QUENBY_HELPER), program()));
    EXPECT_TRUE(QFile::link(QStringLiteral(QUENBY_BUNDLE "/Contents/MacOS/QNBHelper.app/Contents/PlugIns"),
                            contents + QStringLiteral("/MacOS/QNBHelper.app/Contents/PlugIns")));
    EXPECT_TRUE(QFile::copy(QStringLiteral(QUENBY_BUNDLE "/Contents/Info.plist"),
                            contents + QStringLiteral("/Info.plist")));
    EXPECT_TRUE(QFile::copy(QStringLiteral(QUENBY_BUNDLE "/Contents/MacOS/QNBHelper.app/Contents/Info.plist"),
                            contents + QStringLiteral("/MacOS/QNBHelper.app/Contents/Info.plist")));
    EXPECT_TRUE(QFile::link(resources(), contents + QStringLiteral("/Resources")));
    EXPECT_TRUE(QDir().mkpath(target()));
}

QString HelperFixture::program() const
{
    return paneContents(home_) + QStringLiteral("/MacOS/QNBHelper.app/Contents/MacOS/QNBHelper");
}

QString HelperFixture::resources()
{
    return QStringLiteral(QUENBY_BUNDLE "/Contents/Resources");
}

QJsonDocument HelperFixture::Ended::json() const
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(output, &error);
    EXPECT_EQ(error.error, QJsonParseError::NoError) << output.constData();
    return document;
}

HelperFixture::Ended HelperFixture::run(const QStringList &arguments, const QString &busAddress)
{
    QProcess process;
    process.setProcessEnvironment(home_.environment(busAddress));
    process.setWorkingDirectory(home_.path());
    // A test that is killed leaves nobody behind.
    process.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
    process.start(program(), arguments);
    EXPECT_TRUE(process.waitForStarted()) << qPrintable(process.errorString());
    process.closeWriteChannel();
    // Events are processed meanwhile: a fake of the test may have to answer.
    QEventLoop loop;
    QObject::connect(&process, &QProcess::finished, &loop, &QEventLoop::quit);
    QTimer::singleShot(longTime, &loop, &QEventLoop::quit);
    if (process.state() != QProcess::NotRunning)
        loop.exec();
    EXPECT_EQ(process.state(), QProcess::NotRunning);
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            process.readAllStandardOutput(), process.readAllStandardError()};
}

HelperFixture::Ended HelperFixture::create(const QString &preset, const QStringList &more,
                                           const QString &busAddress)
{
    return run(QStringList{QStringLiteral("--create"), preset, QStringLiteral("--in"), target()} + more,
               busAddress);
}

QVariantMap HelperFixture::file(const QString &name, const QVariantMap &more)
{
    QVariantMap item = more;
    item.insert(QStringLiteral("filename"), name);
    return item;
}

QVariantMap HelperFixture::folder(const QString &name, const QVariantList &children, const QVariantMap &more)
{
    QVariantMap item = file(name, more);
    item.insert(QStringLiteral("isFolder"), true);
    item.insert(QStringLiteral("children"), children);
    return item;
}

QVariantMap HelperFixture::preset(const QString &label, const QVariantList &children, const QString &script)
{
    return {{QStringLiteral("label"), label},
            {QStringLiteral("fileHierarchy"), folder(QStringLiteral("root"), children)},
            {QStringLiteral("scriptFile"), script},
            {QStringLiteral("presetDescription"), QString(QStringLiteral("About ") + label)}};
}

void HelperFixture::storePresets(const QList<QVariantMap> &presets)
{
    QNBSettings settings;
    for (const QVariantMap &stored : presets)
        settings.presets.append(
            QNBPresetRecord::fromStored(PropertyListDocument::fromVariant(stored)->root()));
    Preferences preferences(QStringLiteral(QUENBY_IDENTIFIER),
                            {home_.configFolder(), home_.runtimeFolder(), nullptr, longTime});
    const Result<> written = QNBSettingsStore::write(preferences, settings);
    ASSERT_TRUE(written) << qPrintable(written.error);
}

void HelperFixture::put(const QString &path, const QByteArray &bytes, bool isExecutable)
{
    ASSERT_TRUE(QDir().mkpath(QFileInfo(path).path()));
    QFile written(path);
    ASSERT_TRUE(written.open(QIODevice::WriteOnly)) << qPrintable(path);
    ASSERT_EQ(written.write(bytes), bytes.size());
    if (isExecutable) {
        ASSERT_TRUE(written.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    }
}

void HelperFixture::putScript(const QString &name, const QByteArray &bytes)
{
    put(home_.dataFolder() + QStringLiteral("/Quenby/Scripts/") + name, bytes, true);
}

void HelperFixture::putContent(const QString &name, const QByteArray &bytes)
{
    put(home_.dataFolder() + QStringLiteral("/Quenby/File Content/") + name, bytes, false);
}

QStringList HelperFixture::tree(const QString &folder)
{
    QStringList paths;
    QDirIterator walk(folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                      QDirIterator::Subdirectories);
    while (walk.hasNext()) {
        walk.next();
        paths.append(QDir(folder).relativeFilePath(walk.filePath()) +
                     (walk.fileInfo().isDir() ? QStringLiteral("/") : QString()));
    }
    paths.sort();
    return paths;
}

QByteArray HelperFixture::bytesOf(const QString &name) const
{
    QFile read(target() + u'/' + name);
    EXPECT_TRUE(read.open(QIODevice::ReadOnly)) << qPrintable(name);
    return read.readAll();
}
