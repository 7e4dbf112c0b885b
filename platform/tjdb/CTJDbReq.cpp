#include "CTJDbReq.h"

#include "TJDbText.h"

namespace TJDB {

const CTJDbCommand& CTJDbReq::command(int index) const
{
    static const CTJDbCommand none;
    if (index < 0 || index >= numOfCommands())
        return none;
    return m_commands[std::size_t(index)];
}

void CTJDbReq::clear()
{
    CTJDbInterface::clear();
    m_commands.clear();
}

std::string CTJDbReq::serialize() const
{
    std::string out;
    serializeElements(&out);
    for (const CTJDbCommand& c : m_commands) {
        if (c.kind() != CTJDbCommand::KindSubscribe)
            continue;
        out.append("subscribe=");
        out.append(std::to_string(c.subscribeType()));
        out.push_back('|');
        text::appendEscaped(&out, c.table(), std::char_traits<char>::length(c.table()));
        out.push_back('\n');
    }
    return out;
}

bool CTJDbReq::parseItem(const char* key, std::size_t keyLength, const char* value, std::size_t valueLength,
                         std::string* error)
{
    const text::Item item{key, keyLength, value, valueLength, true};
    if (!text::keyIs(item, "subscribe"))
        return true;  // an item of a later version: skipped
    std::vector<std::pair<const char*, std::size_t>> parts;
    text::splitList(value, valueLength, &parts);
    int type = 0;
    std::string table;
    if (parts.size() != 2 || !text::toInt(parts[0].first, parts[0].second, &type)
        || !text::unescape(parts[1].first, parts[1].second, &table) || table.empty()
        || table.find('\0') != std::string::npos) {
        *error = "subscribe wants <type>|<table>";
        return false;
    }
    CTJDbCommand command;
    command.setSubscribe(type, table.c_str());
    m_commands.push_back(command);
    return true;
}

}  // namespace TJDB
