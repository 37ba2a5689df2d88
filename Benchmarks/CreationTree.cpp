// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Benchmarks/CreationTree.h"

#include <QFile>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr int contentSize = 1024;
constexpr mode_t folderMode = 0755;
constexpr mode_t fileMode = 0644;
const QString contentName = QStringLiteral("Content");

QVariantMap permissions(mode_t mode)
{
    QVariantMap digits;
    for (std::size_t i = 0; i < QNBHierarchyItem::permissionKeys.size(); ++i)
        digits.insert(QNBHierarchyItem::permissionKeys[i], mode >> 3 * (2 - i) & 7);
    return digits;
}

int countEntries(const QByteArray &folder)
{
    DIR *directory = ::opendir(folder.constData());
    int count = -2;
    while (directory && ::readdir(directory))
        ++count;
    if (directory)
        ::closedir(directory);
    return count;
}

bool hasMode(const QByteArray &path, mode_t mode, struct stat &information)
{
    return ::stat(path.constData(), &information) == 0 && (information.st_mode & ALLPERMS) == mode;
}

} // namespace

CreationTree::CreationTree(int items, const QString &contentFolder)
    : folders_(items / (1 + filesPerFolder))
    , content_(contentSize, 'c')
    , root_(QNBHierarchyItem::initWithDictionary(
          QNBHierarchyItem::itemDictionaryWithFilename(QString(), true, nullptr)))
{
    QFile content(contentFolder + u'/' + contentName);
    if (!content.open(QIODevice::WriteOnly) || content.write(content_) != content_.size())
        qFatal("cannot write the content file");
    const auto add = [](const QNBHierarchyItemPtr &folder, const QByteArray &name, bool isFolder) {
        QNBHierarchyItemPtr item = QNBHierarchyItem::initWithDictionary(
            QNBHierarchyItem::itemDictionaryWithFilename(QString::fromLatin1(name), isFolder, nullptr));
        item->setCustomPermissions(permissions(isFolder ? folderMode : fileMode));
        if (!isFolder)
            item->setContentFilename(contentName);
        folder->addChild(item);
        return item;
    };
    for (int i = 0; i < folders_; ++i) {
        const QNBHierarchyItemPtr folder = add(root_, folderName(i), true);
        for (int j = 0; j < filesPerFolder; ++j)
            add(folder, fileName(j), false);
    }
}

QByteArray CreationTree::folderName(int folder) const
{
    return "Folder " + QByteArray::number(folder);
}

QByteArray CreationTree::fileName(int file)
{
    return "File " + QByteArray::number(file) + ".txt";
}

bool CreationTree::isIn(const QByteArray &target) const
{
    struct stat information = {};
    bool isWhole = countEntries(target) == folders_;
    for (int i = 0; isWhole && i < folders_; ++i) {
        const QByteArray folder = target + '/' + folderName(i);
        isWhole = hasMode(folder, folderMode, information) && countEntries(folder) == filesPerFolder;
        for (int j = 0; isWhole && j < filesPerFolder; ++j) {
            const QByteArray file = folder + '/' + fileName(j);
            isWhole = hasMode(file, fileMode, information) && information.st_size == content_.size();
        }
    }
    QFile last(
        QFile::decodeName(target + '/' + folderName(folders_ - 1) + '/' + fileName(filesPerFolder - 1)));
    return isWhole && last.open(QIODevice::ReadOnly) && last.readAll() == content_;
}

bool CreationTree::makeWithBareCalls(const QByteArray &target) const
{
    std::vector<QByteArray> files;
    for (int j = 0; j < filesPerFolder; ++j)
        files.push_back(fileName(j));
    const int top = ::open(target.constData(), O_PATH | O_DIRECTORY | O_CLOEXEC);
    bool ok = top != -1;
    for (int i = 0; ok && i < folders_; ++i) {
        const QByteArray name = folderName(i);
        ok = ::mkdirat(top, name.constData(), folderMode) == 0;
        const int folder = ::openat(top, name.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        ok = ok && ::fchmod(folder, folderMode) == 0;
        for (const QByteArray &fileInFolder : files) {
            const int file = ::openat(folder, fileInFolder.constData(),
                                      O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, fileMode);
            ok = ok && ::write(file, content_.constData(), std::size_t(content_.size())) == content_.size() &&
                 ::fchmod(file, fileMode) == 0;
            ok = ::close(file) == 0 && ok;
        }
        ok = ::close(folder) == 0 && ok;
    }
    ::close(top);
    return ok;
}
