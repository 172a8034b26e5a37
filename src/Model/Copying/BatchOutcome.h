#pragma once

#include "Batch/BatchPlan.h"
#include "Batch/BatchResult.h"
#include "Model/RowChanges.h"

#include <QAbstractListModel>
#include <QString>

#include <optional>
#include <string>
#include <vector>

namespace slatewise {

class L10n;

/// One sentence of what came out of a batch, ready to be shown.
struct OutcomeLine {
    Q_GADGET
    Q_PROPERTY(QString text MEMBER text)
    Q_PROPERTY(bool isGood READ isGood)
    Q_PROPERTY(bool isNote READ isNote)
    Q_PROPERTY(bool isBad READ isBad)

public:
    enum class Kind {
        Good,
        Plain,
        /// What a person should know of a batch that went well.
        Note,
        Bad
    };

    QString text;
    Kind kind = Kind::Plain;

    bool isGood() const { return kind == Kind::Good; }
    bool isNote() const { return kind == Kind::Note; }
    bool isBad() const { return kind == Kind::Bad; }

    const QString& key() const { return text; }
    friend bool operator==(const OutcomeLine&, const OutcomeLine&) = default;
};

/// Such sentences for views. The roles are the properties of an `OutcomeLine`.
class OutcomeListModel : public QAbstractListModel {
    Q_OBJECT
    Q_PROPERTY(int count READ rowCount NOTIFY countChanged)

public:
    using QAbstractListModel::QAbstractListModel;

    const std::vector<OutcomeLine>& rows() const { return rows_; }
    void setRows(std::vector<OutcomeLine> rows);

    int rowCount(const QModelIndex& parent = {}) const override {
        return parent.isValid() ? 0 : static_cast<int>(rows_.size());
    }
    QVariant data(const QModelIndex& index, int role) const override {
        return RowChanges::value(rows_, index, role);
    }
    QHash<int, QByteArray> roleNames() const override {
        return RowChanges::roleNames<OutcomeLine>();
    }

Q_SIGNALS:
    void countChanged();

private:
    friend struct RowChanges;
    std::vector<OutcomeLine> rows_;
};

/// What is told of a batch that has ended. Functions of values.
namespace BatchOutcome {

/// One line for each pair that was planned, or for each card where nothing was to be copied; what
/// failed comes first.
std::vector<OutcomeLine> pairs(const BatchPlan& plan, const BatchResult& result, L10n l10n);

/// What all pairs met beyond what their own lines say, each once; failures first.
std::vector<OutcomeLine> problems(const BatchResult& result, L10n l10n);

/// The pair that a batch failed by: none behind it was begun.
struct FailedPair {
    BatchPair planned;
    PairResult result;
};
/// Empty after a good end, and where nothing was begun.
std::optional<FailedPair> failedPair(const BatchPlan& plan, const BatchResult& result);

/// What it failed by, and that its card was left mounted, if it is there now.
std::string headline(const FailedPair& failed, bool isCardThere, L10n l10n);

/// What to do about it.
std::string advice(const FailedPair& failed, bool wasHashing, L10n l10n);

} // namespace BatchOutcome

} // namespace slatewise
