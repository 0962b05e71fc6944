#include "ui/controls/FormViewModel.h"

#include "ui/panel/Localizer.h"

namespace kestrant {

FormViewModel::FormViewModel(Localizer& localizer, QObject* parent) : QObject(parent), localizer_(localizer) {
    connect(&localizer, &Localizer::languageChanged, this, &FormViewModel::changed);
}

void FormViewModel::end(int form) {
    if (form == form_)
        ++form_;
}

QString FormViewModel::errorText() const {
    return error_ ? localizer_(*error_) : QString();
}

void FormViewModel::beginForm() {
    ++form_;
    error_.reset();
    isSaving_ = false;
}

bool FormViewModel::leaveForm() {
    if (isSaving_ && !isUnknown_)
        return false;
    if (isSaving_)
        beginForm();
    return true;
}

void FormViewModel::edited() {
    error_.reset();
    Q_EMIT changed();
}

void FormViewModel::set(QString& field, const QString& value) {
    if (value == field)
        return;
    field = value;
    edited();
}

void FormViewModel::fail(const TextPair& reason) {
    error_ = reason;
    Q_EMIT changed();
}

void FormViewModel::startSaving() {
    isSaving_ = true;
    isUnknown_ = false;
    edited();
}

void FormViewModel::tellFailure(const TextPair& reason) {
    Q_EMIT changeFailed(localizer_(reason));
}

}  // namespace kestrant
