#include "CTJDbCommand.h"

namespace TJDB {

void CTJDbCommand::setSubscribe(int type, const char* table)
{
    m_kind = KindSubscribe;
    m_type = type;
    m_table = table ? table : "";
}

}  // namespace TJDB
