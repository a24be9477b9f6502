#pragma once

#include <gio/gio.h>

#include <memory>

namespace talvenor {

/// Gives back what GLib's functions have handed over.
struct GLibRelease
{
    void operator()(gpointer object) const { g_object_unref(object); }
    void operator()(GError *error) const { g_error_free(error); }
    void operator()(GHashTable *table) const { g_hash_table_unref(table); }
};

/// A reference to a GObject that ends with this pointer.
template<typename Object>
using GObjectPointer = std::unique_ptr<Object, GLibRelease>;

using GErrorPointer = std::unique_ptr<GError, GLibRelease>;
using GHashTablePointer = std::unique_ptr<GHashTable, GLibRelease>;

} // namespace talvenor
