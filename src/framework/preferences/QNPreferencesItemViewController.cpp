#include "framework/preferences/QNPreferencesItemViewController.h"

/// The view may have gone with its window.
QNPreferencesItemViewController::~QNPreferencesItemViewController() {
    delete view_.data();
}

QWidget& QNPreferencesItemViewController::view() {
    if (view_ == nullptr) {
        view_ = loadView().release();
        view_->ensurePolished();
        viewOriginalSize_ = view_->sizeHint().expandedTo(view_->minimumSize());
    }
    return *view_;
}

QSize QNPreferencesItemViewController::viewOriginalSize() {
    view();
    return viewOriginalSize_;
}
