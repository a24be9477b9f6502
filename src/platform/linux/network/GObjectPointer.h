#pragma once

#include <gio/gio.h>

#include <memory>

namespace talvenor {

/// Gives back what GLib's functions have handed over.
struct GLibRelease
{
    void operator()(gpointer object) const { g_object_unref(object); }
    void operator()(GHashTable *table) const { g_hash_table_unref(table); }
    void operator()(GVariant *value) const { g_variant_unref(value); }
};

/// A reference to a GObject that ends with this pointer.
template<typename Object>
using GObjectPointer = std::unique_ptr<Object, GLibRelease>;

using GVariantPointer = std::unique_ptr<GVariant, GLibRelease>;
using GHashTablePointer = std::unique_ptr<GHashTable, GLibRelease>;

} // namespace talvenor
