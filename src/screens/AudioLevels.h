#pragma once

#include <QList>
#include <QMetaType>
#include <QtQml/qqmlregistration.h>

namespace talvenor {

/// Recent input levels, 0 to 1 each, oldest first. QML hands it on as it is, without a look into it.
struct AudioLevels
{
    Q_GADGET
    QML_VALUE_TYPE(audioLevels)

public:
    QList<float> values;

    friend bool operator==(const AudioLevels &, const AudioLevels &) = default;
};

} // namespace talvenor
