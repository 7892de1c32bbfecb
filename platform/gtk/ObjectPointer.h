#pragma once

#include <glib-object.h>

#include <memory>

namespace zorvik::platform::gtk {

// Owns one reference to a GObject, respectively memory of GLib's allocator.
struct Unreference {
    void operator()(gpointer object) const { g_object_unref(object); }
};
struct Free {
    void operator()(gpointer memory) const { g_free(memory); }
};

template <class T>
using ObjectPointer = std::unique_ptr<T, Unreference>;
using TextPointer = std::unique_ptr<char, Free>;

// A new reference to an object that is shared or floating.
template <class T>
ObjectPointer<T> share(T* object) {
    return ObjectPointer<T>(static_cast<T*>(g_object_ref_sink(object)));
}

// An object's address, nullptr from its disposal on.
template <class T>
class WeakPointer {
  public:
    explicit WeakPointer(T* object = nullptr) { set(object); }
    WeakPointer(const WeakPointer&) = delete;
    WeakPointer& operator=(const WeakPointer&) = delete;
    ~WeakPointer() { set(nullptr); }

    T* get() const { return static_cast<T*>(object_); }
    void set(T* object) {
        if (object_ != nullptr)
            g_object_remove_weak_pointer(static_cast<GObject*>(object_), &object_);
        object_ = object;
        if (object_ != nullptr) g_object_add_weak_pointer(static_cast<GObject*>(object_), &object_);
    }

  private:
    gpointer object_ = nullptr;
};

}  // namespace zorvik::platform::gtk
