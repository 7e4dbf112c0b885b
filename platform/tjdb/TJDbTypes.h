#pragma once
// Numbers shared by requests, answers and notifications of the database link.
#include "tjdb_export.h"

namespace TJDB {

// Elements of a request or response, addressed by number.
enum ReqElementT {
    ReqElementToken = 2,         // text of the request's token, returned with every answer
    ReqElementDbName = 3,        // database name ("user")
    ReqElementSql = 4,           // SQL text, one or more statements
    ReqElementTotalRows = 10,    // answer: rows of the whole result
    ReqElementStartRow = 11,     // answer: first row of this batch in the result
    ReqElementEndRow = 12,       // answer: last row of this batch (-1 for none)
    ReqElementNotification = 14, // answer: NotificationT
    ReqElementSubscriber = 16,   // request: network address of the subscriber, may be absent
    ReqElementError = 17,        // answer: why the request failed; no rows then
    ReqElementChanges = 18,      // answer: rows changed by the last statement
    ReqElementLastInsertId = 19, // answer: row id of the last insertion on the connection
    ReqElementMax = 255
};

// Element 14 of an answer: what the rows stand for.
enum NotificationT {
    NotificationSync = -1,  // the whole result (an answer, or a full resynchronisation)
    NotificationDelete = 1, // rows of one column, the row ids that are gone
    NotificationInsert = 2, // new rows, row id first
    NotificationUpdate = 4  // changed rows, row id first
};

// Type of a subscribe command: a mask of NotificationT kinds; 0 cancels.
enum SubscribeTypeT { SubscribeCancel = 0, SubscribeAll = 65535 };

}  // namespace TJDB
