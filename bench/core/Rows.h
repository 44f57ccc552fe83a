#pragma once

#include "bench/core/Table.h"

#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Statement.h>

#include <string>
#include <type_traits>

/// Statements of the database and the values in them. To be called inside a transaction; throws the
/// exceptions of the database.
namespace bench {

/// Bytes, which are stored as a BLOB; a plain text is stored as UTF-8.
struct Blob
{
    const std::string &bytes;
};

template <typename Value>
void bindValue(SQLite::Statement &statement, int index, const Value &value)
{
    if constexpr (std::is_same_v<Value, Blob>) {
        statement.bind(index, value.bytes.data(), static_cast<int>(value.bytes.size()));
    } else {
        statement.bind(index, value);
    }
}

/// The statement with these values as its parameters.
template <typename... Values>
SQLite::Statement prepared(SQLite::Database &database, const std::string &sql, const Values &...values)
{
    SQLite::Statement statement(database, sql);
    int index = 0;
    (bindValue(statement, ++index, values), ...);
    return statement;
}

/// Runs such a statement. The number of rows that it has changed.
template <typename... Values>
int execute(SQLite::Database &database, const std::string &sql, const Values &...values)
{
    return prepared(database, sql, values...).exec();
}

/// Binds the fields to the first parameters.
template <typename Fields, typename Owner>
void bindFields(SQLite::Statement &statement, const Fields &fields, const Owner &owner)
{
    int index = 0;
    for (const auto &field : fields) {
        ++index;
        field.visit(owner, [&](const auto &value) {
            if constexpr (std::is_same_v<decltype(value), const std::string &>) {
                field.isUtf8 ? bindValue(statement, index, value) : bindValue(statement, index, Blob{value});
            } else {
                bindValue(statement, index, value);
            }
        });
    }
}

/// Reads the fields from the first columns.
template <typename Fields, typename Owner>
void readFields(const SQLite::Statement &row, const Fields &fields, Owner *owner)
{
    int index = 0;
    for (const auto &field : fields) {
        const SQLite::Column column = row.getColumn(index++);
        field.visit(*owner, [&](auto &value) {
            using Value = std::decay_t<decltype(value)>;
            if constexpr (std::is_same_v<Value, std::string>) {
                value = column.getString();
            } else {
                value = static_cast<Value>(column.getInt64());
            }
        });
    }
}

} // namespace bench
