#pragma once

#include <QByteArray>
#include <QSet>
#include <QString>

#include <functional>
#include <optional>

/// Adds the entries of a report to whatever keeps them. Names of entries are made safe: no file can
/// be written outside the folder that they are extracted to, and a second entry of a name gets
/// " (2)". One thread at a time.
class EntryWriter {
  public:
    virtual ~EntryWriter() = default;
    EntryWriter() = default;
    EntryWriter(const EntryWriter&) = delete;
    EntryWriter& operator=(const EntryWriter&) = delete;

    /// False if it could not be written.
    [[nodiscard]] bool addData(const QByteArray& data, const QString& name);

    /// Decides what is added of a file, by its path and its content; nothing leaves it out.
    using Filter =
        std::function<std::optional<QByteArray>(const QString& path, QByteArray content)>;

    /// Adds a file, or all files of a folder, under its own name. Hidden files and folders, links
    /// inside the folder, and what is neither file nor folder are left out. False if something
    /// could not be read or written; the rest is there.
    [[nodiscard]] bool addPathRecursively(const QString& path, const Filter& handler);

    /// A path that every system takes for a relative one.
    [[nodiscard]] static QString safeName(const QString& name);

  protected:
    /// The name is safe and has not been used.
    virtual bool writeEntry(const QByteArray& data, const QString& name) = 0;

  private:
    bool addFolder(const QString& path, const QString& name, const Filter& handler);
    bool addFile(const QString& path, const QString& name, const Filter& handler);
    QString uniqueName(const QString& name);

    QSet<QString> taken_; // names and the folders in them
};
