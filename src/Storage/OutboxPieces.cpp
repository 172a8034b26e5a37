#include "Storage/OutboxPieces.h"

#include <SQLiteCpp/SQLiteCpp.h>

namespace slatewise::OutboxPieces {

namespace {

/// Into the row itself while it fits there.
class PayloadWriter {
public:
    PayloadWriter(SQLite::Database& database, std::int64_t row) : database_(database), row_(row) {}

    void put(std::string_view text) {
        pending_ += text;
        if (pending_.size() < kPieceBytes)
            return;
        write("INSERT INTO outbox_pieces (text, outboxID) VALUES (?, ?)");
        isInPieces_ = true;
    }

    void finish() {
        if (!isInPieces_)
            write("UPDATE outbox SET payload = ? WHERE id = ?");
        else if (!pending_.empty())
            write("INSERT INTO outbox_pieces (text, outboxID) VALUES (?, ?)");
    }

private:
    static constexpr std::size_t kPieceBytes = 4 << 20;

    void write(const char* words) {
        SQLite::Statement statement(database_, words);
        statement.bindNoCopy(1, pending_);
        statement.bind(2, row_);
        statement.exec();
        pending_.clear();
    }

    SQLite::Database& database_;
    const std::int64_t row_;
    std::string pending_;
    bool isInPieces_ = false;
};

} // namespace

void writePayload(SQLite::Database& database, std::int64_t row,
                  const FileSystem::TextSource& payload) {
    PayloadWriter writer(database, row);
    payload([&](std::string_view text) { writer.put(text); });
    writer.finish();
}

std::string read(SQLite::Database& database, std::int64_t row) {
    SQLite::Statement query(database,
                            "SELECT text FROM outbox_pieces WHERE outboxID = ? ORDER BY id");
    query.bind(1, row);
    std::string text;
    while (query.executeStep())
        text += query.getColumn(0).getString();
    return text;
}

} // namespace slatewise::OutboxPieces
