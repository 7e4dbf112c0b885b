#include "CTJDbResp.h"

#include <algorithm>
#include <cstring>

#include "TJDbText.h"

namespace TJDB {

namespace {
// The text "%N" as a whole cell stands for NULL: '%' is always escaped in
// cells, so no text cell reads that way.
const char kNull[] = "%N";
}  // namespace

std::size_t CTJDbResp::cellIndex(int row, int column) const
{
    if (row < 0 || row >= m_rows || column < 0 || column >= numOfCols())
        return std::size_t(-1);
    return std::size_t(row) * m_columns.size() + std::size_t(column);
}

const char* CTJDbResp::field(int row, int column) const
{
    const std::size_t i = cellIndex(row, column);
    if (i == std::size_t(-1))
        return "";
    return m_cells.c_str() + m_start[i];
}

int CTJDbResp::fieldLength(int row, int column) const
{
    const std::size_t i = cellIndex(row, column);
    return i == std::size_t(-1) ? 0 : static_cast<int>(m_length[i]);
}

bool CTJDbResp::isNull(int row, int column) const
{
    const std::size_t i = cellIndex(row, column);
    return i != std::size_t(-1) && m_null[i];
}

const char* CTJDbResp::colName(int column) const
{
    if (column < 0 || column >= numOfCols())
        return "";
    return m_columns[std::size_t(column)].c_str();
}

void CTJDbResp::setColumns(const std::vector<std::string>& names)
{
    clearRows();
    m_columns.assign(names.begin(), names.begin() + std::min<std::size_t>(names.size(), MaxColumns));
}

void CTJDbResp::addColumn(const std::string& name)
{
    clearRows();
    if (m_columns.size() < MaxColumns)
        m_columns.push_back(name);
}

void CTJDbResp::addRow(const char* const* fields, const int* lengths, int count)
{
    const int columns = numOfCols();
    if (columns == 0)
        return;
    for (int c = 0; c < columns; ++c) {
        const char* value = (fields && c < count) ? fields[c] : nullptr;
        std::size_t length = 0;
        if (value)
            length = (lengths && lengths[c] >= 0) ? std::size_t(lengths[c]) : std::strlen(value);
        m_start.push_back(static_cast<std::uint32_t>(m_cells.size()));
        m_length.push_back(static_cast<std::uint32_t>(length));
        m_null.push_back(value == nullptr);
        if (value)
            m_cells.append(value, length);
        m_cells.push_back('\0');
    }
    ++m_rows;
}

void CTJDbResp::addRow(std::initializer_list<const char*> fields)
{
    addRow(fields.begin(), nullptr, static_cast<int>(fields.size()));
}

void CTJDbResp::clearRows()
{
    m_rows = 0;
    m_cells.clear();
    m_start.clear();
    m_length.clear();
    m_null.clear();
}

void CTJDbResp::clear()
{
    CTJDbInterface::clear();
    m_columns.clear();
    clearRows();
}

std::string CTJDbResp::serialize() const
{
    std::string out;
    out.reserve(64 + m_cells.size() + m_cells.size() / 8);
    serializeElements(&out);
    if (m_columns.empty())
        return out;
    out.append("columns=");
    for (std::size_t c = 0; c < m_columns.size(); ++c) {
        if (c)
            out.push_back('|');
        text::appendEscaped(&out, m_columns[c]);
    }
    out.push_back('\n');
    const std::size_t columns = m_columns.size();
    for (int r = 0; r < m_rows; ++r) {
        out.append("row=");
        for (std::size_t c = 0; c < columns; ++c) {
            const std::size_t i = std::size_t(r) * columns + c;
            if (c)
                out.push_back('|');
            if (m_null[i])
                out.append(kNull);
            else
                text::appendEscaped(&out, m_cells.data() + m_start[i], m_length[i]);
        }
        out.push_back('\n');
    }
    return out;
}

bool CTJDbResp::parseItem(const char* key, std::size_t keyLength, const char* value, std::size_t valueLength,
                          std::string* error)
{
    const text::Item item{key, keyLength, value, valueLength, true};
    const bool isColumns = text::keyIs(item, "columns");
    const bool isRow = text::keyIs(item, "row");
    if (!isColumns && !isRow)
        return true;  // an item of a later version: skipped

    std::vector<std::pair<const char*, std::size_t>> parts;
    text::splitList(value, valueLength, &parts);
    std::string cell;
    if (isColumns) {
        if (!m_columns.empty()) {
            *error = "columns given twice";
            return false;
        }
        if (parts.size() > MaxColumns) {
            *error = "too many columns";
            return false;
        }
        for (const auto& part : parts) {
            if (!text::unescape(part.first, part.second, &cell)) {
                *error = "bad escape in a column name";
                return false;
            }
            m_columns.push_back(cell);
        }
        return true;
    }

    if (m_columns.empty() || parts.size() != m_columns.size()) {
        *error = "row " + std::to_string(m_rows) + " does not match the columns";
        return false;
    }
    if (m_cells.size() + valueLength + parts.size() > UINT32_MAX) {
        *error = "response too large";
        return false;
    }
    for (const auto& part : parts) {
        const bool null = part.second == 2 && std::memcmp(part.first, kNull, 2) == 0;
        if (!null && !text::unescape(part.first, part.second, &cell)) {
            *error = "bad escape in row " + std::to_string(m_rows);
            return false;
        }
        m_start.push_back(static_cast<std::uint32_t>(m_cells.size()));
        m_length.push_back(null ? 0 : static_cast<std::uint32_t>(cell.size()));
        m_null.push_back(null);
        if (!null)
            m_cells.append(cell);
        m_cells.push_back('\0');
    }
    ++m_rows;
    return true;
}

}  // namespace TJDB
