// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// Tells the thread sanitizer what it cannot see. Qt is not built with it, so that a call which Qt carries to
// another thread, or a semaphore, looks to it as if nothing came before anything else. These take the place
// of Qt's own functions of the same names in a test program, call them, and say what happens before what.

#include <QDeadlineTimer>
#include <QMetaObject>
#include <QObject>
#include <QSemaphore>
#include <QThread>

#include <dlfcn.h>
#include <future>
#include <sanitizer/tsan_interface.h>

namespace {

/// Stands for the end of every thread: what one of them did comes before what follows a wait for one.
char endOfThreads;

template <typename Function>
Function original(const char *name)
{
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

/// A call on its way to another thread.
class Handed : public QtPrivate::QSlotObjectBase
{
public:
    explicit Handed(QtPrivate::QSlotObjectBase *slot)
        : QSlotObjectBase(&perform)
        , slot_(slot)
    {
        __tsan_release(this);
    }

private:
    static void perform(int which, QSlotObjectBase *self, QObject *receiver, void **arguments, bool *result)
    {
        auto *const handed = static_cast<Handed *>(self);
        __tsan_acquire(handed);
        switch (which) {
        case Destroy:
            handed->slot_->destroyIfLastRef();
            __tsan_release(&endOfThreads);
            delete handed;
            break;
        case Call:
            handed->slot_->call(receiver, arguments);
            __tsan_release(handed);
            break;
        default:
            *result = false;
        }
    }

    QtPrivate::QSlotObjectBase *const slot_;
};

} // namespace

bool QMetaObject::invokeMethodImpl(QObject *object, QtPrivate::QSlotObjectBase *slot, Qt::ConnectionType type,
                                   void *result)
{
    using Function = bool (*)(QObject *, QtPrivate::QSlotObjectBase *, Qt::ConnectionType, void *);
    static const auto call = original<Function>(
        "_ZN11QMetaObject16invokeMethodImplEP7QObjectPN9QtPrivate15QSlotObjectBaseEN2Qt14ConnectionTypeEPv");
    return call(object, new Handed(slot), type, result);
}

void QSemaphore::release(int count)
{
    static const auto call = original<void (*)(QSemaphore *, int)>("_ZN10QSemaphore7releaseEi");
    __tsan_release(this);
    call(this, count);
}

void QSemaphore::acquire(int count)
{
    static const auto call = original<void (*)(QSemaphore *, int)>("_ZN10QSemaphore7acquireEi");
    call(this, count);
    __tsan_acquire(this);
}

bool QSemaphore::tryAcquire(int count, int timeout)
{
    static const auto call = original<bool (*)(QSemaphore *, int, int)>("_ZN10QSemaphore10tryAcquireEii");
    const bool isAcquired = call(this, count, timeout);
    if (isAcquired)
        __tsan_acquire(this);
    return isAcquired;
}

bool QThread::wait(QDeadlineTimer deadline)
{
    static const auto call =
        original<bool (*)(QThread *, QDeadlineTimer)>("_ZN7QThread4waitE14QDeadlineTimer");
    const bool hasEnded = call(this, deadline);
    if (hasEnded)
        __tsan_acquire(&endOfThreads);
    return hasEnded;
}

QThread *QThread::createThreadImpl(std::future<void> &&future)
{
    static const auto call =
        original<QThread *(*)(std::future<void> &&)>("_ZN7QThread16createThreadImplEOSt6futureIvE");
    return call(std::async(std::launch::deferred, [work = std::move(future)]() mutable {
        work.get();
        __tsan_release(&endOfThreads);
    }));
}
