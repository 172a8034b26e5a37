#pragma once

#include "Platform/Files/FileSystem.h"

#include <cstdint>
#include <string>

namespace SQLite {
class Database;
}

/// Payloads of the outbox that are too long to be held whole, in pieces of a table of their own:
/// SQLite holds each row whole, whoever writes or reads it. Within a transaction of the caller's.
namespace slatewise::OutboxPieces {

/// Fills the payload of a row that has none yet, as its text is made; each piece of that must end
/// between two characters.
void writePayload(SQLite::Database& database, std::int64_t row,
                  const FileSystem::TextSource& payload);

/// What of the row's payload lies in pieces.
std::string read(SQLite::Database& database, std::int64_t row);

} // namespace slatewise::OutboxPieces
