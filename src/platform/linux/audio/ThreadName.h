#pragma once

#include <QString>
#include <QThread>

#include <pthread.h>

#include <string>

namespace talvenor {

/// Names the calling thread, for debuggers and for QThread::currentThread()->objectName(). The system itself
/// keeps the first 15 characters.
inline void nameThisThread(const std::string &name)
{
    constexpr std::size_t kLongestSystemName = 15;
    // Fails only for names that are too long.
    pthread_setname_np(pthread_self(), name.substr(0, kLongestSystemName).c_str());
    QThread::currentThread()->setObjectName(QString::fromStdString(name));
}

} // namespace talvenor
