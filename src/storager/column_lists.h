#pragma once

#include <cstddef>
#include <functional>
#include <string>

#include "sqliteconfig/config_records.h"

using FieldPredicate = std::function<bool(const TableFieldInfo&)>;

// Accepts every field: the column list of the insert statements.
bool IsAnyField(const TableFieldInfo& field);

// Accepts the fields of the unique index.
bool IsUniqueField(const TableFieldInfo& field);

// "name type,name type", nothing quoted.
std::string JoinColumnDefs(const TableFields& fields);

// "name,name" of the fields that the predicate accepts, nothing quoted.
std::string JoinColumnNamesIf(const TableFields& fields, const FieldPredicate& accepts);

// "name,name" of all fields, nothing quoted.
std::string JoinColumnNames(const TableFields& fields);

// "?,?,?" with `count` marks.
std::string MakePlaceholders(size_t count);

// "insert into T(names) values(marks)" for all fields.
std::string MakeInsertSql(const std::string& table_name, const TableFields& fields);
