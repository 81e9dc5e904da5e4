#include "storager/column_lists.h"

namespace {

std::string WithoutLastComma(std::string text) {
  if (!text.empty()) text.pop_back();
  return text;
}

}  // namespace

bool IsAnyField([[maybe_unused]] const TableFieldInfo& field) { return true; }

bool IsUniqueField(const TableFieldInfo& field) { return field.is_unique_field != 0; }

std::string JoinColumnDefs(const TableFields& fields) {
  std::string text;
  for (const TableFieldInfo& field : fields) {
    text += field.field_name + " " + field.field_type_text + ",";
  }
  return WithoutLastComma(std::move(text));
}

std::string JoinColumnNamesIf(const TableFields& fields, const FieldPredicate& accepts) {
  std::string text;
  for (const TableFieldInfo& field : fields) {
    if (accepts(field)) text += field.field_name + ",";
  }
  return WithoutLastComma(std::move(text));
}

std::string JoinColumnNames(const TableFields& fields) {
  return JoinColumnNamesIf(fields, IsAnyField);
}

std::string MakePlaceholders(size_t count) {
  std::string text;
  for (size_t i = 0; i < count; ++i) text += "?,";
  return WithoutLastComma(std::move(text));
}

std::string MakeInsertSql(const std::string& table_name, const TableFields& fields) {
  return "insert into " + table_name + "(" + JoinColumnNamesIf(fields, IsAnyField) + ") values(" +
         MakePlaceholders(fields.size()) + ")";
}
