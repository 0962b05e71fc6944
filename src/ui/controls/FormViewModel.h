#pragma once

#include "foundation/Text.h"

#include <QObject>
#include <QPointer>
#include <QQmlEngine>
#include <QString>

#include <tl/expected.hpp>

#include <optional>

namespace kestrant {

class Localizer;

/// The base of form view models: errors, saving, and the number that tells one showing of a form from the
/// next. Derived classes name it with its namespace, since the QML tools look the base up as it is written.
/// Thread: main.
class FormViewModel : public QObject {
    Q_OBJECT
    QML_ANONYMOUS
    Q_PROPERTY(bool isSaving READ isSaving NOTIFY changed)
    /// Whether texts can be edited: not while they are being saved, and not where nothing can be.
    Q_PROPERTY(bool canEdit READ canEdit NOTIFY changed)
    /// Why nothing of what is shown can be saved at all; empty where it can.
    Q_PROPERTY(QString lockReason READ lockReason NOTIFY changed)
    /// Why what the form is about could not be loaded or saved; empty when nothing is wrong.
    Q_PROPERTY(QString errorText READ errorText NOTIFY changed)

  public:
    /// The form of this number is gone: what fails from now on is told by `changeFailed`. Nothing happens
    /// when another form has begun.
    Q_INVOKABLE void end(int form);

    [[nodiscard]] bool isSaving() const { return isSaving_; }
    [[nodiscard]] bool canEdit() const { return !isSaving_ && lockReason().isEmpty(); }
    [[nodiscard]] virtual QString lockReason() const { return {}; }
    [[nodiscard]] QString errorText() const;

  Q_SIGNALS:
    void changed();
    /// A change that was asked for by a form that is gone did not happen; the sentence says why.
    void changeFailed(const QString& message);

  protected:
    /// The localizer must outlive the form.
    FormViewModel(Localizer& localizer, QObject* parent);

    /// Begins another form, with nothing wrong and nothing under way.
    void beginForm();
    /// Tells a late result from one of the form that is shown.
    [[nodiscard]] int form() const { return form_; }
    /// Something was written: what was wrong may be right now.
    virtual void edited();
    void set(QString& field, const QString& value);
    void fail(const TextPair& reason);
    void clearError() { error_.reset(); }
    void startSaving();
    /// Gives up a form of which it is not known whether it was saved, so that another one can begin. False
    /// while it is being saved.
    [[nodiscard]] bool leaveForm();
    /// Ends saving with the result of a form; false when the form is gone or it failed, which is told then.
    template <typename Result>
    [[nodiscard]] bool finishSaving(int form, const Result& result) {
        if (form != form_) {
            if (!result)
                tellFailure(result.error().message());
            return false;
        }
        isSaving_ = false;
        if (!result)
            fail(result.error().message());
        return result.has_value();
    }
    /// The same of something new. While its outcome is unknown the form goes on saving, and says so.
    template <typename Value, typename Error>
    [[nodiscard]] bool finishCreation(int form, const tl::expected<Value, Error>& result) {
        if (form != form_ || !isUnknown(result))
            return finishSaving(form, result);
        isUnknown_ = true;
        fail(result.error().message());
        return false;
    }
    template <typename Value, typename Error>
    [[nodiscard]] static bool isUnknown(const tl::expected<Value, Error>& result) {
        return !result && result.error().code == Error::Code::outcomeUnknown;
    }

  private:
    void tellFailure(const TextPair& reason);

    Localizer& localizer_;
    std::optional<TextPair> error_;
    bool isSaving_ = false;
    bool isUnknown_ = false;
    int form_ = 0;
};

}  // namespace kestrant
