#include "platform/text/Texts.h"

#include "platform/base/SystemLog.h"
#include "platform/language/MessageLanguages.h"

#include <QCoreApplication>
#include <QFile>
#include <QLibraryInfo>
#include <QTranslator>

#include <algorithm>
#include <string>
#include <vector>

namespace {

void loadFile(const QString& path) {
    if (!QFile::exists(path))
        return;
    auto* const catalogue = new QTranslator(QCoreApplication::instance()); // which owns it
    if (catalogue->load(path))
        QCoreApplication::installTranslator(catalogue);
    else
        platform::systemLog(platform::LogPriority::warning, "The catalogue %s is damaged",
                            path.toStdString().c_str());
}

} // namespace

void Texts::load(const std::filesystem::path& folder) {
    const QString own = QString::fromStdString(folder.string());
    const QString qt = QLibraryInfo::path(QLibraryInfo::TranslationsPath);
    auto names = platform::catalogueNames();
    std::ranges::reverse(names); // the one that is loaded last is asked first
    for (const std::string& name : names) {
        const QString language = QString::fromStdString(name);
        loadFile(qt + QStringLiteral("/qtbase_") + language + QStringLiteral(".qm"));
        loadFile(own + QStringLiteral("/tonvale_") + language + QStringLiteral(".qm"));
    }
}

QString Texts::tr(const char* english) {
    return QCoreApplication::translate("Texts", english);
}
