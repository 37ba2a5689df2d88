// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// Stands for a file manager's window: takes files that are dragged to it from other programs, or offers some
// to be dragged from it.
//
// usage: quenby-drop-target [--at X,Y] [--into FOLDER] [--ask-early] [--offer FILE]...
//
// A window without a frame, 200 pixels wide and high, at X,Y. --into copies what is dropped into FOLDER.
// --ask-early asks for the URLs while the drag is still over the window, and never again. With --offer a drag
// that begins in the window offers these files, which need not exist.
//
// One line is printed for each thing that happens:
//   ready                      the window is there
//   enter FORMAT...            a drag came over the window
//   may copy|move|link...      what the other program allows
//   hover URL present|absent   (--ask-early) what it is, and whether there is such a file by now
//   leave                      the drag left the window, or was given up over it
//   drop copy|move|link        it was dropped
//   url URL present|absent     what was dropped
//   copied PATH                (--into) where it is now
//   done                       all there is to say about the drop was said
//   offered copy|move|link|none  (--offer) what the other program did with the drag

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QDrag>
#include <QFileInfo>
#include <QMimeData>
#include <QMouseEvent>
#include <QTextStream>
#include <QUrl>
#include <QWidget>

namespace {

constexpr int sideLength = 200;

void print(const QStringList &words)
{
    QTextStream(stdout) << words.join(u' ') << Qt::endl;
}

QString nameOf(Qt::DropAction action)
{
    switch (action) {
    case Qt::CopyAction:
        return QStringLiteral("copy");
    case Qt::MoveAction:
        return QStringLiteral("move");
    case Qt::LinkAction:
        return QStringLiteral("link");
    default:
        return QStringLiteral("none");
    }
}

class DropTarget final : public QWidget
{
public:
    QString folder;
    bool asksEarly = false;
    QList<QUrl> offered;

    DropTarget()
        : QWidget(nullptr, Qt::BypassWindowManagerHint)
    {
        setAcceptDrops(true);
        resize(sideLength, sideLength);
    }

protected:
    void dragEnterEvent(QDragEnterEvent *event) override
    {
        early_.clear();
        print(QStringList(QStringLiteral("enter")) + event->mimeData()->formats());
        QStringList allowed;
        for (const Qt::DropAction action : {Qt::CopyAction, Qt::MoveAction, Qt::LinkAction}) {
            if (event->possibleActions().testFlag(action))
                allowed.append(nameOf(action));
        }
        print(QStringList(QStringLiteral("may")) + allowed);
        if (event->mimeData()->hasUrls())
            event->acceptProposedAction();
    }
    void dragMoveEvent(QDragMoveEvent *event) override
    {
        if (asksEarly && early_.isEmpty()) {
            early_ = event->mimeData()->urls();
            printUrls(QStringLiteral("hover"), early_);
        }
        event->acceptProposedAction();
    }
    void dragLeaveEvent(QDragLeaveEvent *) override { print({QStringLiteral("leave")}); }
    void dropEvent(QDropEvent *event) override
    {
        event->acceptProposedAction();
        print({QStringLiteral("drop"), nameOf(event->dropAction())});
        const QList<QUrl> urls = asksEarly ? early_ : event->mimeData()->urls();
        printUrls(QStringLiteral("url"), urls);
        if (!folder.isEmpty())
            copy(urls);
        print({QStringLiteral("done")});
    }
    void mouseMoveEvent(QMouseEvent *) override
    {
        if (offered.isEmpty())
            return;
        auto *drag = new QDrag(this);
        auto *files = new QMimeData;
        files->setUrls(offered);
        drag->setMimeData(files);
        const Qt::DropAction action =
            drag->exec(Qt::CopyAction | Qt::MoveAction | Qt::LinkAction, Qt::CopyAction);
        print({QStringLiteral("offered"), nameOf(action)});
    }

private:
    static void printUrls(const QString &word, const QList<QUrl> &urls)
    {
        for (const QUrl &url : urls)
            print({word, QString::fromLatin1(url.toEncoded()),
                   QFileInfo::exists(url.toLocalFile()) ? QStringLiteral("present")
                                                        : QStringLiteral("absent")});
    }
    void copy(const QList<QUrl> &urls) const
    {
        for (const QUrl &url : urls) {
            const QString path = QDir(folder).filePath(url.fileName());
            if (QFile::copy(url.toLocalFile(), path))
                print({QStringLiteral("copied"), path});
        }
    }

    QList<QUrl> early_;
};

} // namespace

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    const QCommandLineOption at(QStringLiteral("at"), {}, QStringLiteral("X,Y"), QStringLiteral("0,0"));
    const QCommandLineOption into(QStringLiteral("into"), {}, QStringLiteral("FOLDER"));
    const QCommandLineOption askEarly(QStringLiteral("ask-early"));
    const QCommandLineOption offer(QStringLiteral("offer"), {}, QStringLiteral("FILE"));
    QCommandLineParser parser;
    parser.addOptions({at, into, askEarly, offer});
    parser.process(application);

    DropTarget target;
    target.folder = parser.value(into);
    target.asksEarly = parser.isSet(askEarly);
    for (const QString &file : parser.values(offer))
        target.offered.append(QUrl::fromLocalFile(file));
    const QStringList position = parser.value(at).split(u',');
    target.move(position.value(0).toInt(), position.value(1).toInt());
    target.show();
    QCoreApplication::processEvents();
    print({QStringLiteral("ready")});
    return QApplication::exec();
}
