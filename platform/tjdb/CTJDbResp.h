#pragma once
// An answer or a change notification of the database peer: the elements of
// the request it answers (token, database), its place in the whole result
// (10 total rows, 11 first and 12 last row of this batch), the notification
// type (14), and a block of rows under named columns. Every cell is text or
// NULL.
//
//   TJDB::CTJDbResp resp;
//   if (resp.parse(text))
//       for (int r = 0; r < resp.numOfRows(); ++r)
//           use(resp.field(r, 0));
#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

#include "CTJDbInterface.h"

namespace TJDB {

class TJDB_EXPORT CTJDbResp : public CTJDbInterface
{
public:
    // Most columns a response may have; more make the text unreadable.
    enum { MaxColumns = 32767 };

    int numOfRows() const { return m_rows; }
    int numOfCols() const { return static_cast<int>(m_columns.size()); }
    // Cell text, NUL-terminated; "" for NULL and out of range.
    const char* field(int row, int column) const;
    // Length in bytes of the cell (a cell may hold NUL bytes); 0 out of range.
    int fieldLength(int row, int column) const;
    bool isNull(int row, int column) const;
    // Column name; "" out of range.
    const char* colName(int column) const;

    // Writing: columns first (dropping any rows), then rows.
    void setColumns(const std::vector<std::string>& names);
    void addColumn(const std::string& name);
    // One row: fields[i] null is NULL; lengths null means NUL-terminated fields.
    // Missing fields are NULL, fields beyond the columns are dropped.
    void addRow(const char* const* fields, const int* lengths, int count);
    void addRow(std::initializer_list<const char*> fields);
    void clearRows();

    void clear() override;
    std::string serialize() const override;
    // Bytes serialize() would need for the rows so far (an estimate from above).
    std::size_t rowBytes() const { return m_cells.size(); }

protected:
    const char* kind() const override { return "response"; }
    bool parseItem(const char* key, std::size_t keyLength, const char* value, std::size_t valueLength,
                   std::string* error) override;

private:
    std::size_t cellIndex(int row, int column) const;

    std::vector<std::string> m_columns;
    int m_rows = 0;
    std::string m_cells;                // each cell's bytes followed by a NUL
    std::vector<std::uint32_t> m_start; // per cell: offset into m_cells
    std::vector<std::uint32_t> m_length;
    std::vector<bool> m_null;
};

}  // namespace TJDB
