#include "platform/defaults/UserDefaults.h"

#include "platform/base/Directories.h"
#include "platform/defaults/DefaultsStore.h"
#include "platform/defaults/PropertyList.h"

#include <cmath>
#include <optional>
#include <utility>

namespace platform {

namespace {

std::optional<double> numberIn(const QVariant& value) {
    bool isNumber = true;
    double number = 0;
    switch (value.typeId()) {
    case QMetaType::Bool:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
        number = value.toDouble();
        break;
    case QMetaType::QString:
        number = value.toString().trimmed().toDouble(&isNumber);
        break;
    default:
        isNumber = false;
    }
    return isNumber && std::isfinite(number) ? std::optional(number) : std::nullopt;
}

std::optional<qlonglong> integerIn(const QVariant& value) {
    if (value.typeId() == QMetaType::LongLong) // which a double would round
        return value.toLongLong();
    if (value.typeId() == QMetaType::QString) {
        bool isInteger = false;
        const qlonglong integer = value.toString().trimmed().toLongLong(&isInteger);
        if (isInteger)
            return integer;
    }
    constexpr double bound = 0x1p63;
    const std::optional<double> number = numberIn(value);
    if (!number || *number >= bound || *number < -bound)
        return {};
    return static_cast<qlonglong>(*number);
}

std::optional<bool> booleanIn(const QVariant& value) {
    if (value.typeId() == QMetaType::QString) {
        const QString text = value.toString().trimmed().toLower();
        if (text == QLatin1String("yes") || text == QLatin1String("true"))
            return true;
        if (text == QLatin1String("no") || text == QLatin1String("false"))
            return false;
    }
    const std::optional<double> number = numberIn(value);
    if (!number)
        return {};
    return std::fpclassify(*number) != FP_ZERO;
}

template <typename Type>
std::optional<Type> exactlyIn(const QVariant& value) {
    if (value.metaType() != QMetaType::fromType<Type>())
        return {};
    return value.value<Type>();
}

template <typename Type>
Type read(const DefaultsStore& store, const QString& key,
          std::optional<Type> (*typeIn)(const QVariant&)) {
    if (const std::optional<Type> value = typeIn(store.stored(key)))
        return *value;
    return typeIn(store.registered(key)).value_or(Type());
}

} // namespace

UserDefaults& UserDefaults::standard() {
    static auto* const defaults = new UserDefaults(standardPath());
    return *defaults;
}

std::filesystem::path UserDefaults::standardPath() {
    const std::string folder = preferencesDirectory();
    if (folder.empty())
        return {};
    return std::filesystem::path(folder) / "com.quarnel.Tonvale.plist";
}

void UserDefaults::setReporter(std::function<void(const DefaultsError& trouble)> reporter) {
    DefaultsStore::setReporter(std::move(reporter));
}

UserDefaults::UserDefaults(const std::filesystem::path& path, DefaultsFileCalls& calls)
    : store_(std::make_shared<DefaultsStore>(path, calls)) {
    store_->load();
}

UserDefaults::~UserDefaults() {
    store_->finish();
}

void UserDefaults::registerDefaults(const QVariantMap& values) {
    store_->registerDefaults(storableValue(values).toMap());
}

QVariant UserDefaults::value(const QString& key) const {
    const QVariant stored = store_->stored(key);
    return stored.isValid() ? stored : store_->registered(key);
}

bool UserDefaults::boolean(const QString& key) const {
    return read<bool>(*store_, key, &booleanIn);
}

qlonglong UserDefaults::integer(const QString& key) const {
    return read<qlonglong>(*store_, key, &integerIn);
}

double UserDefaults::number(const QString& key) const {
    return read<double>(*store_, key, &numberIn);
}

QString UserDefaults::text(const QString& key) const {
    return read<QString>(*store_, key, &exactlyIn<QString>);
}

QVariantMap UserDefaults::dictionary(const QString& key) const {
    return read<QVariantMap>(*store_, key, &exactlyIn<QVariantMap>);
}

QVariantList UserDefaults::list(const QString& key) const {
    return read<QVariantList>(*store_, key, &exactlyIn<QVariantList>);
}

void UserDefaults::set(const QString& key, const QVariant& value) {
    constexpr std::size_t around = 1; // the file's dictionary
    store_->change(key, storableValue(value, around));
}

void UserDefaults::remove(const QString& key) {
    store_->change(key, {});
}

DefaultsObservation UserDefaults::observe(const QString& key, std::function<void()> handler) {
    return DefaultsObservation(
        [weak = std::weak_ptr(store_), observer = store_->addObserver(key, std::move(handler))] {
            if (const auto store = weak.lock())
                store->cancelObserver(observer);
        });
}

bool UserDefaults::synchronize() {
    return store_->synchronize();
}

bool UserDefaults::synchronize(std::chrono::milliseconds bound) {
    return store_->synchronize(bound);
}

bool UserDefaults::lacksRoom() const {
    return store_->lacksRoom();
}

DefaultsObservation::~DefaultsObservation() {
    if (cancel_)
        cancel_();
}

DefaultsObservation::DefaultsObservation(DefaultsObservation&& other) noexcept
    : cancel_(std::exchange(other.cancel_, nullptr)) {}

DefaultsObservation& DefaultsObservation::operator=(DefaultsObservation&& other) noexcept {
    if (this != &other) {
        DefaultsObservation former(std::move(*this));
        cancel_ = std::exchange(other.cancel_, nullptr);
    }
    return *this;
}

} // namespace platform
