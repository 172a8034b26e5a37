#pragma once

namespace SQLite {
class Database;
}

namespace slatewise::Migrations {

/// Applies every migration that the store has not seen yet, each in a transaction of its own
/// together with the note that it was applied. Two processes may do so at the same moment.
void apply(SQLite::Database& database);

} // namespace slatewise::Migrations
