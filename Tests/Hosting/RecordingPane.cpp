// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/PreferencePane.h"

#include <QFile>
#include <QLabel>
#include <QMessageBox>
#include <QObject>
#include <QThread>
#include <QTimer>

#include <cstdlib>

namespace {

/// Like a library that finds the display gone.
constexpr int exitCode = 1;

/// Appends a line to the file that the test names.
void record(const QByteArray &call)
{
    QFile file(qEnvironmentVariable("QUENBY_TEST_RECORD"));
    if (file.open(QIODevice::WriteOnly | QIODevice::Append))
        file.write(call + '\n');
}

/// How the pane misbehaves, if it is to.
bool isAskedFor(const char *behaviour)
{
    return qgetenv("QUENBY_TEST_BEHAVIOUR") == behaviour;
}

class RecordedView : public QLabel
{
public:
    RecordedView()
        : QLabel(QStringLiteral("recording"))
    {
        setMinimumSize(500, 300);
        if (isAskedFor("tell something"))
            setFocusPolicy(Qt::StrongFocus);
    }
    ~RecordedView() override { record("view destroyed"); }
    QSize sizeHint() const override
    {
        return isAskedFor("want much room") ? QSize(5000, 5000) : QLabel::sizeHint();
    }
};

class RecordingPane : public PreferencePane
{
public:
    RecordingPane() { record("created"); }
    ~RecordingPane() override { record("destroyed"); }

    void setListener(PreferencePaneListener *listener) override
    {
        if (isAskedFor("tell something"))
            listener->showNotice({.kind = PaneNotice::Kind::Hint, .text = QStringLiteral("Told.")});
    }
    QWidget *loadMainView() override
    {
        record("loadMainView");
        while (isAskedFor("start slowly") && !QFile::exists(qEnvironmentVariable("QUENBY_TEST_GO_ON")))
            QThread::msleep(5);
        if (!isAskedFor("make no view"))
            view_ = new RecordedView;
        if (isAskedFor("need much room"))
            view_->setMinimumSize(5000, 4000);
        return view_;
    }
    QWidget *mainView() const override { return view_; }
    void mainViewDidLoad() override { record("mainViewDidLoad"); }
    void didSelect() override
    {
        record("didSelect");
        if (isAskedFor("ask a question") || isAskedFor("ask for a while") ||
            isAskedFor("exit from a question"))
            QTimer::singleShot(0, view_, [this] { ask(); });
        if (isAskedFor("exit"))
            QTimer::singleShot(0, view_, [] { std::exit(exitCode); });
    }
    Result<> didUnselect() override
    {
        record("didUnselect");
        return result();
    }
    Result<> save() override
    {
        record("save");
        return result();
    }
    Result<> saveCopy(const QString &path) override
    {
        QFile copy(path);
        const bool isWritten = copy.open(QIODevice::WriteOnly) && copy.write("copy") == 4;
        return isWritten ? Result<>() : Result<>::failure(copy.errorString());
    }

    void openFiles(const QStringList &paths) override { record("openFiles " + paths.join(u' ').toUtf8()); }

private:
    static Result<> result()
    {
        return isAskedFor("fail to save") ? Result<>::failure(QStringLiteral("writing x: No room"))
                                          : Result<>();
    }

    void ask()
    {
        QMessageBox question(view_);
        QTimer::singleShot(0, &question, [] { record("asking"); });
        if (isAskedFor("exit from a question"))
            QTimer::singleShot(0, &question, [] { std::exit(exitCode); });
        if (isAskedFor("ask for a while"))
            QTimer::singleShot(1000, &question, &QMessageBox::accept);
        question.exec();
        record("asked");
    }

    QWidget *view_ = nullptr;
};

class RecordingPaneFactory : public QObject, public PreferencePaneFactory
{
    Q_OBJECT
    Q_INTERFACES(PreferencePaneFactory)
    Q_PLUGIN_METADATA(IID QUENBY_PREFERENCE_PANE_IID)
public:
    PreferencePane *createPane() override { return isAskedFor("make no pane") ? nullptr : new RecordingPane; }
};

} // namespace

#include "RecordingPane.moc"
