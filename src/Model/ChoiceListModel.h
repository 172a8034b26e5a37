#pragma once

#include "Model/RowChanges.h"

#include <QAbstractListModel>
#include <QString>

#include <vector>

namespace slatewise {

/// One of several things to choose from, or one name of a list, ready to be shown.
struct Choice {
    Q_GADGET
    Q_PROPERTY(QString value MEMBER value)
    Q_PROPERTY(QString name MEMBER name)
    Q_PROPERTY(QString detail MEMBER detail)
    Q_PROPERTY(bool chosen MEMBER chosen)

public:
    /// By which the model is told which one is meant.
    QString value;
    QString name;
    QString detail;
    bool chosen = false;

    const QString& key() const { return value; }
    friend bool operator==(const Choice&, const Choice&) = default;
};

/// Choices for views. The roles are the properties of a `Choice`.
class ChoiceListModel : public QAbstractListModel {
    Q_OBJECT

public:
    using QAbstractListModel::QAbstractListModel;

    const std::vector<Choice>& rows() const { return rows_; }
    void setRows(std::vector<Choice> rows) { RowChanges::bring(*this, rows_, std::move(rows)); }

    int rowCount(const QModelIndex& parent = {}) const override {
        return parent.isValid() ? 0 : static_cast<int>(rows_.size());
    }
    QVariant data(const QModelIndex& index, int role) const override {
        return RowChanges::value(rows_, index, role);
    }
    QHash<int, QByteArray> roleNames() const override { return RowChanges::roleNames<Choice>(); }

private:
    friend struct RowChanges;
    std::vector<Choice> rows_;
};

} // namespace slatewise
