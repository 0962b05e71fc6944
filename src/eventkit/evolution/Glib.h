#pragma once

#include <QByteArray>
#include <QString>

#include <gio/gio.h>

#include <memory>
#include <utility>

namespace kestrant::evolution {

// Owning handles for GLib objects.

struct Unref {
    void operator()(gpointer object) const { g_object_unref(object); }
};
/// One reference to an object.
template <typename Object>
using Ref = std::unique_ptr<Object, Unref>;

struct Free {
    void operator()(gpointer memory) const { g_free(memory); }
};
using Text = std::unique_ptr<gchar, Free>;

/// A list with a reference to each of its objects.
template <typename List>
class ObjectList {
  public:
    ObjectList() = default;
    explicit ObjectList(List* list) : list_(list) {}
    ObjectList(const ObjectList&) = delete;
    ObjectList& operator=(const ObjectList&) = delete;
    ~ObjectList() {
        for (const List* link = list_; link; link = link->next)
            g_object_unref(link->data);
        if constexpr (std::is_same_v<List, GSList>)
            g_slist_free(list_);
        else
            g_list_free(list_);
    }
    [[nodiscard]] List** out() { return &list_; }
    [[nodiscard]] const List* first() const { return list_; }

  private:
    List* list_ = nullptr;
};

/// Receives the error of a call.
class Error {
  public:
    Error() = default;
    Error(const Error&) = delete;
    Error& operator=(const Error&) = delete;
    ~Error() { g_clear_error(&error_); }

    [[nodiscard]] GError** out() {
        g_clear_error(&error_);
        return &error_;
    }
    [[nodiscard]] bool is(GQuark domain, int code) const { return g_error_matches(error_, domain, code); }
    [[nodiscard]] bool isIn(GQuark domain) const { return error_ && error_->domain == domain; }
    [[nodiscard]] int code() const { return error_ ? error_->code : 0; }
    [[nodiscard]] QString message() const {
        return error_ ? QString::fromUtf8(error_->message).trimmed() : QString();
    }

  private:
    GError* error_ = nullptr;
};

}  // namespace kestrant::evolution
