import QtQuick
import Talvenor

/// The ultra-thin material of bars and capsules: a translucent layer, lighter than a light window and a dark one. It
/// does not blur what lies behind it, which the software backend could not do.
Rectangle {
    color: Theme.material
}
