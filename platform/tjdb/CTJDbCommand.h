#pragma once
// A command carried by a request besides its SQL. The one kind is a
// subscription: the subscriber's token, the table, and the kinds of change
// (a mask of NotificationT values; SubscribeAll for every kind, 0 cancels).
#include <string>

#include "TJDbTypes.h"
#include "tjdb_export.h"

namespace TJDB {

class TJDB_EXPORT CTJDbCommand
{
public:
    enum KindT { KindNone = 0, KindSubscribe = 1 };

    CTJDbCommand() = default;

    void setSubscribe(int type, const char* table);
    KindT kind() const { return m_kind; }
    int subscribeType() const { return m_type; }
    const char* table() const { return m_table.c_str(); }

private:
    KindT m_kind = KindNone;
    int m_type = 0;
    std::string m_table;
};

}  // namespace TJDB
