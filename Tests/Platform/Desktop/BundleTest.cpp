// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Desktop/Bundle.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <dlfcn.h>
#include <gtest/gtest.h>

namespace {

const QString identifier = QStringLiteral("org.quenby.test.Bundle");

class BundleTest : public ::testing::Test
{
protected:
    void write(const QString &relativePath, const QByteArray &bytes)
    {
        const QString path = bundlePath() + u'/' + relativePath;
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(bytes), bytes.size());
    }
    void writeInformation(const QByteArray &pairs)
    {
        write(QStringLiteral("Contents/Info.plist"),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>" + pairs +
                  "</dict></plist>\n");
    }
    QString bundlePath() const { return folder_.filePath(QStringLiteral("Example.prefPane")); }
    QString executablePath() const { return bundlePath() + QStringLiteral("/Contents/MacOS/Code.so"); }
    Bundle bundle() const { return Bundle::bundleWithPath(bundlePath()).value(); }

    const QTemporaryDir folder_;
};

const QByteArray usualInformation = "<key>CFBundleIdentifier</key><string>org.quenby.test.Bundle</string>"
                                    "<key>CFBundleExecutable</key><string>Code.so</string>";

bool isListed(const QString &path)
{
    const QList<Bundle> bundles = Bundle::allBundles();
    return std::any_of(bundles.begin(), bundles.end(),
                       [&](const Bundle &bundle) { return bundle.bundlePath() == path; });
}

} // namespace

TEST_F(BundleTest, NothingThereIsNoBundle)
{
    EXPECT_FALSE(Bundle::bundleWithPath({}));
    EXPECT_FALSE(Bundle::bundleWithPath(bundlePath()));
}

TEST_F(BundleTest, AFolderWithoutInformationIsNoBundle)
{
    ASSERT_TRUE(QDir().mkpath(bundlePath() + QStringLiteral("/Contents/Info.plist/")));
    EXPECT_FALSE(Bundle::bundleWithPath(bundlePath()));
}

TEST_F(BundleTest, ADirectoryNamedLikeABundleNeedsSomethingInside)
{
    const QTemporaryDir folder;
    const auto make = [&folder](const char *name) {
        const QString path = folder.filePath(QString::fromUtf8(name));
        EXPECT_TRUE(QDir().mkpath(path));
        return path;
    };
    for (const char *name : {"A.app", "A.bundle", "A.plugin", "A.framework", "A.APP"}) {
        const QString path = make(name);
        EXPECT_FALSE(Bundle::isBundle(path)) << name;
        make((std::string(name) + "/Contents").c_str());
        EXPECT_TRUE(Bundle::isBundle(path)) << name;
        EXPECT_TRUE(Bundle::isBundle(path + u'/')) << name;
    }
    const QString application = make("B.app");
    make("B.app/AppDir");
    EXPECT_TRUE(Bundle::isBundle(application));
    EXPECT_TRUE(Bundle::isApplicationBundle(application));
    EXPECT_FALSE(Bundle::isApplicationBundle(make("A.plugin")));

    const QString other = make("Folder");
    make("Folder/Contents");
    EXPECT_FALSE(Bundle::isBundle(other));
    EXPECT_FALSE(Bundle::isBundle(make("app")));
    EXPECT_FALSE(Bundle::isBundle({}));
    EXPECT_FALSE(Bundle::isBundle(folder.filePath(QStringLiteral("missing.app"))));
}

TEST_F(BundleTest, ADirectoryWithBundleInformationIsABundleWhateverItsName)
{
    writeInformation(usualInformation);
    EXPECT_TRUE(Bundle::isBundle(bundlePath()));
    EXPECT_FALSE(Bundle::isApplicationBundle(bundlePath()));
}

TEST_F(BundleTest, AFileNamedLikeABundleIsNone)
{
    write(QStringLiteral("file.app"), "no directory");
    EXPECT_FALSE(Bundle::isBundle(bundlePath() + QStringLiteral("/file.app")));
}

TEST_F(BundleTest, TellsItsInformation)
{
    writeInformation(usualInformation + "<key>Number</key><integer>7</integer>");
    EXPECT_EQ(bundle().bundleIdentifier(), identifier);
    EXPECT_EQ(bundle().infoDictionary().value(QStringLiteral("Number")), QVariant(qlonglong(7)));
}

TEST_F(BundleTest, AnUnreadableInformationFileIsEmpty)
{
    write(QStringLiteral("Contents/Info.plist"), "<plist><dict>");
    EXPECT_TRUE(bundle().infoDictionary().isEmpty());
    EXPECT_TRUE(bundle().bundleIdentifier().isEmpty());
    EXPECT_TRUE(bundle().executablePath().isEmpty());
}

TEST_F(BundleTest, ItsPathIsAbsoluteAndClean)
{
    writeInformation(usualInformation);
    EXPECT_EQ(Bundle::bundleWithPath(bundlePath() + u'/')->bundlePath(), bundlePath());
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(folder_.path()));
    EXPECT_EQ(Bundle::bundleWithPath(QStringLiteral("./Example.prefPane"))->bundlePath(), bundlePath());
    QDir::setCurrent(before);
}

TEST_F(BundleTest, FindsItsExecutable)
{
    writeInformation(usualInformation);
    EXPECT_TRUE(bundle().executablePath().isEmpty());
    write(QStringLiteral("Contents/MacOS/Code.so"), "code");
    EXPECT_EQ(bundle().executablePath(), executablePath());
}

TEST_F(BundleTest, AnExecutableOutsideTheBundleIsNone)
{
    write(QStringLiteral("Contents/Outside.so"), "code");
    ASSERT_TRUE(QDir().mkpath(bundlePath() + QStringLiteral("/Contents/MacOS")));
    writeInformation("<key>CFBundleExecutable</key><string>../Outside.so</string>");
    EXPECT_TRUE(bundle().executablePath().isEmpty());
}

TEST_F(BundleTest, FindsResources)
{
    writeInformation(usualInformation);
    write(QStringLiteral("Contents/Resources/Presets.plist"), "presets");
    write(QStringLiteral("Contents/Resources/Folder/File"), "file");
    const QString resources = bundlePath() + QStringLiteral("/Contents/Resources");
    EXPECT_EQ(bundle().resourcePath(), resources);
    EXPECT_EQ(bundle().pathForResource(QStringLiteral("Presets"), QStringLiteral("plist")),
              resources + QStringLiteral("/Presets.plist"));
    EXPECT_EQ(bundle().pathForResource(QStringLiteral("Presets.plist"), {}),
              resources + QStringLiteral("/Presets.plist"));
    EXPECT_EQ(bundle().pathForResource(QStringLiteral("Folder"), {}), resources + QStringLiteral("/Folder"));
    EXPECT_EQ(bundle().pathForResource(QStringLiteral("File"), {}, QStringLiteral("Folder")),
              resources + QStringLiteral("/Folder/File"));
    EXPECT_TRUE(bundle().pathForResource(QStringLiteral("Presets"), QStringLiteral("txt")).isEmpty());
    EXPECT_TRUE(bundle().pathForResource({}, {}).isEmpty());
}

TEST_F(BundleTest, FindsItsInformationFileAboveTheResources)
{
    writeInformation(usualInformation);
    EXPECT_EQ(bundle().pathForResource(QStringLiteral("Info"), QStringLiteral("plist"), QStringLiteral("..")),
              bundlePath() + QStringLiteral("/Contents/Info.plist"));
}

TEST_F(BundleTest, IsListedOnceItsCodeIsMapped)
{
    writeInformation(usualInformation);
    ASSERT_TRUE(QDir().mkpath(bundlePath() + QStringLiteral("/Contents/MacOS")));
    ASSERT_TRUE(QFile::copy(QStringLiteral(QUENBY_TEST_MODULE), executablePath()));
    EXPECT_FALSE(isListed(bundlePath()));
    void *const code = ::dlopen(QFile::encodeName(executablePath()).constData(), RTLD_NOW | RTLD_LOCAL);
    ASSERT_TRUE(code) << ::dlerror();
    EXPECT_TRUE(isListed(bundlePath()));
    ::dlclose(code);
    EXPECT_FALSE(isListed(bundlePath()));
}

TEST_F(BundleTest, CodeOutsideABundleListsNone)
{
    void *const code = ::dlopen(QUENBY_TEST_MODULE, RTLD_NOW | RTLD_LOCAL);
    ASSERT_TRUE(code) << ::dlerror();
    EXPECT_TRUE(Bundle::allBundles().isEmpty());
    ::dlclose(code);
}

TEST_F(BundleTest, TheCodesOfAnExecutableAreThoseOfItsBundle)
{
    const auto codes = [&](const QByteArray &type, const QByteArray &signature) {
        writeInformation("<key>CFBundlePackageType</key>" + type + "<key>CFBundleSignature</key>" +
                         signature);
        return Bundle::codesOfExecutable(executablePath());
    };
    EXPECT_EQ(Bundle::codesOfExecutable(executablePath()), Bundle::Codes());
    EXPECT_EQ(codes("<string>APPL</string>", "<string>Quen</string>"),
              (Bundle::Codes{0x4150504c, 0x5175656e}));
    EXPECT_EQ(Bundle::codesOfExecutable(bundlePath() + QStringLiteral("/Contents/Resources/Code.so")),
              Bundle::Codes());
    EXPECT_EQ(codes("<string>APP</string>", "<string>QNBHx</string>"), Bundle::Codes());
    EXPECT_EQ(codes("<integer>5</integer>", "<array/>"), Bundle::Codes());
    EXPECT_EQ(codes("<string>\xc3\xa4\xc3\xb6\xc3\xbc\xc3\x9f</string>", "<string>QNBH</string>"),
              (Bundle::Codes{0xe4f6fcdf, 0x514e4248}));
    write(QStringLiteral("Contents/Info.plist"), "damaged");
    EXPECT_EQ(Bundle::codesOfExecutable(executablePath()), Bundle::Codes());
}
