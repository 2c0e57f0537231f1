#pragma once

#include <QString>
#include <QWidget>

class BarButton;
class BarText;

/// Says, in one row, that something does not work and offers what helps against it. Text
/// that does not fit ends in an ellipsis; assistive tools and the tool tip have all of it. Hidden
/// while there is nothing to say. Main thread only.
class ProblemBar final : public QWidget {
    Q_OBJECT

  public:
    /// For people. Without a text there is no problem, without a name no button.
    struct Content {
        QString text;
        QString help = {};    ///< of the button that does something about it
        QString details = {}; ///< of the button that tells more
    };

    /// `height` in pixels.
    explicit ProblemBar(int height, QWidget* parent = nullptr);

    /// Shows or hides itself. Assistive tools are told of a new text.
    void setContent(const Content& content);

    QString text() const;

  Q_SIGNALS:
    void helpWanted();
    void detailsWanted();

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    void announce();

    BarText* const text_;
    BarButton* const help_;
    BarButton* const details_;
};
