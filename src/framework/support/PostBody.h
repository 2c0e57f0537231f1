#pragma once

#include <QIODevice>
#include <QVariantMap>

#include <memory>
#include <variant>
#include <vector>

class QFile;

/// The body of a form: one part for each field, streamed, so that a file is never in memory. It has
/// a fixed size and can seek. The body ends with a separator that opens an empty part.
///
/// Open it with open(). A file that has become shorter makes a read fail. One thread at a time.
class PostBody final : public QIODevice {
    Q_OBJECT

  public:
    /// The text between the parts.
    static constexpr const char* boundary = "0xKhTmLbOuNdArY";

    explicit PostBody(const QVariantMap& fields);
    ~PostBody() override;

    /// Whether all files could be opened.
    [[nodiscard]] bool isComplete() const noexcept { return complete_; }

    bool open(OpenMode mode) override;

    /// False once something has been read: if the server breaks off, the form must not be sent
    /// again, for it may have been taken.
    bool reset() override;
    [[nodiscard]] qint64 size() const override { return size_; }
    [[nodiscard]] bool isSequential() const override { return false; }

  protected:
    qint64 readData(char* data, qint64 maximum) override;
    qint64 writeData(const char* /*data*/, qint64 /*size*/) override { return -1; }

  private:
    using Content = std::variant<QByteArray, std::unique_ptr<QFile>>;
    struct Piece {
        qint64 begin;
        qint64 size;
        Content content;
    };

    void addField(const QString& name, const QVariant& value);
    void addFileField(const QString& name, const QUrl& file);
    void addBytes(const QByteArray& bytes);
    static bool readPiece(const Piece& piece, qint64 offset, char* data, qint64 size);

    std::vector<Piece> pieces_; // without gaps, in the order of the body
    qint64 size_ = 0;
    bool complete_ = true;
    bool wasRead_ = false;
};
