#pragma once

#include "Model/ChoiceListModel.h"
#include "Model/ModelState.h"

#include <QObject>
#include <QString>

namespace slatewise {

/// The template of a session's folder, and what it leads to. GUI thread.
class PathTemplate : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString text READ text NOTIFY changed)
    Q_PROPERTY(QString preview READ preview NOTIFY changed)
    Q_PROPERTY(bool isUsable READ isUsable NOTIFY changed)
    Q_PROPERTY(QString standardText READ standardText CONSTANT)
    Q_PROPERTY(slatewise::ChoiceListModel* tokens READ tokens CONSTANT)
    Q_PROPERTY(slatewise::ChoiceListModel* presets READ presets CONSTANT)

public:
    /// `state` outlives this.
    explicit PathTemplate(ModelState& state);

    QString text() const { return text_; }
    /// Whether the template in force keeps below the destination, as one that was stored by hand
    /// may not.
    bool isUsable() const { return isUsable_; }
    /// The path of the next copy, with how many more cards and destinations there are; why there is
    /// none when the template is not usable.
    QString preview() const { return preview_; }
    static QString standardText();
    /// Pieces to put into a template, under their labels; separators come last.
    ChoiceListModel* tokens() { return &tokens_; }
    /// Ready-made templates: what they are called and what each is good for.
    ChoiceListModel* presets() { return &presets_; }

    /// Takes what is selected now as the example of `expand`, which then does not follow a card
    /// that is pulled while a template is being written.
    Q_INVOKABLE void holdExample();
    /// The path that a template leads to today, with the names of the example.
    Q_INVOKABLE QString expand(const QString& pathTemplate) const;
    /// Why a template cannot be used; empty when it can.
    Q_INVOKABLE QString objection(const QString& pathTemplate) const;
    /// As it would be stored.
    Q_INVOKABLE QString normalized(const QString& pathTemplate) const;
    /// Nothing for a template that cannot be used.
    Q_INVOKABLE void save(const QString& pathTemplate);

Q_SIGNALS:
    void changed();

private:
    void show();
    void showChoices();

    ModelState& state_;
    QString text_;
    QString preview_;
    bool isUsable_ = true;
    ChoiceListModel tokens_;
    ChoiceListModel presets_;
    FolderTemplate::Values example_;
};

} // namespace slatewise
