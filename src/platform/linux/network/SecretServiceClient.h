#pragma once

#include "platform/linux/network/GObjectPointer.h"

// The calls by object path, as libsecret has had them since its first releases, ask for this.
#define SECRET_API_SUBJECT_TO_CHANGE
#include <libsecret/secret.h>

#include <QByteArray>
#include <QString>

#include <optional>

namespace talvenor {

/// The two attributes by which a secret is found.
struct SecretName
{
    QString service;
    QString account;

    friend bool operator==(const SecretName &, const SecretName &) = default;
    friend bool operator<(const SecretName &a, const SecretName &b)
    {
        return a.service == b.service ? a.account < b.account : a.service < b.service;
    }
};

/// What a search has found.
struct FoundSecret
{
    std::optional<QByteArray> newest; ///< the value last written among those that can be read
    bool isAnyLocked = false;
};

/// One connection to the desktop's secret store (org.freedesktop.secrets).
///
/// Calls are synchronous; each throws PlatformError with GLib's code. Of the domain "secret store absent" it
/// is when there is no store on the session bus, or no bus, and of the domain "secret store" otherwise. One
/// thread at a time.
class SecretServiceClient
{
public:
    /// Connects; may start the store where the bus knows how to.
    SecretServiceClient();

    /// Looks without unlocking anything, so nobody is asked.
    [[nodiscard]] FoundSecret find(const SecretName &name);

    /// True if a new secret can be written without anybody being asked.
    [[nodiscard]] bool isDefaultCollectionReady();

    /// Writes in place of what has the same name. Asks the user, and waits for the answer, where the default
    /// collection is locked or has yet to be made.
    void store(const SecretName &name, const QByteArray &value);

    /// Removes what can be removed without anybody being asked; true if nothing of the name is left.
    [[nodiscard]] bool remove(const SecretName &name);

    /// Has the user asked to unlock the default collection and all that bears the name, and waits for the
    /// answer. False if something stays locked.
    [[nodiscard]] bool unlock(const SecretName &name);

private:
    GObjectPointer<SecretService> m_service;
};

} // namespace talvenor
