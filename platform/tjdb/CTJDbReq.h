#pragma once
// A request to the database peer: token (2), database name (3), SQL (4),
// subscriber address (16) and any subscribe commands.
//
//   TJDB::CTJDbReq req;
//   req.set(TJDB::ReqElementToken, "{5c1b...}");
//   req.set(TJDB::ReqElementSql, "SELECT name FROM contacts");
//   std::string text = req.serialize();
#include <string>
#include <vector>

#include "CTJDbCommand.h"
#include "CTJDbInterface.h"

namespace TJDB {

class TJDB_EXPORT CTJDbReq : public CTJDbInterface
{
public:
    void addCommand(const CTJDbCommand& command) { m_commands.push_back(command); }
    int numOfCommands() const { return static_cast<int>(m_commands.size()); }
    // The command at index, or an empty one (KindNone) out of range.
    const CTJDbCommand& command(int index) const;

    void clear() override;
    std::string serialize() const override;

protected:
    const char* kind() const override { return "request"; }
    bool parseItem(const char* key, std::size_t keyLength, const char* value, std::size_t valueLength,
                   std::string* error) override;

private:
    std::vector<CTJDbCommand> m_commands;
};

}  // namespace TJDB
