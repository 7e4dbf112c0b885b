#pragma once
#include "tgui_export.h"
// utilLinkedList...: an intrusive doubly linked list. Each entry starts with
// its links; the caller's data follows them in the same allocation.
#include <cstddef>

struct UtilLinkedListEntryT
{
    UtilLinkedListEntryT* next;
    UtilLinkedListEntryT* prev;
};

struct UtilLinkedListT
{
    UtilLinkedListEntryT* head;
    UtilLinkedListEntryT* tail;
    int count;
};

TGUI_EXPORT void utilLinkedListInit(UtilLinkedListT* list);
// Appends at the tail.
TGUI_EXPORT void utilLinkedListAdd(UtilLinkedListT* list, UtilLinkedListEntryT* entry);
// Inserts `entry` after `after`; a null `after` inserts at the head.
TGUI_EXPORT void utilLinkedListInsert(UtilLinkedListT* list, UtilLinkedListEntryT* after,
                          UtilLinkedListEntryT* entry);
// Unlinks `entry` (which must be in `list`); the caller keeps its memory.
TGUI_EXPORT void utilLinkedListDel(UtilLinkedListT* list, UtilLinkedListEntryT* entry);
// Unlinks and free()s every entry: for entries allocated with malloc.
TGUI_EXPORT void utilLinkedListFree(UtilLinkedListT* list);
TGUI_EXPORT UtilLinkedListEntryT* utilLinkedListFirst(const UtilLinkedListT* list);
TGUI_EXPORT UtilLinkedListEntryT* utilLinkedListLast(const UtilLinkedListT* list);
TGUI_EXPORT UtilLinkedListEntryT* utilLinkedListNext(const UtilLinkedListEntryT* entry);
TGUI_EXPORT UtilLinkedListEntryT* utilLinkedListPrev(const UtilLinkedListEntryT* entry);
// Entry at position n from the head (0 is the first), or null.
TGUI_EXPORT UtilLinkedListEntryT* utilLinkedListNth(const UtilLinkedListT* list, int n);
// Unlinks and returns the first entry, or null when the list is empty.
TGUI_EXPORT UtilLinkedListEntryT* utilLinkedListGet(UtilLinkedListT* list);
// First entry whose data `match` accepts (non-zero), or null.
TGUI_EXPORT UtilLinkedListEntryT* utilLinkedListFind(const UtilLinkedListT* list,
                                         int (*match)(const void* data, const void* key),
                                         const void* key);
TGUI_EXPORT int utilLinkedListCount(const UtilLinkedListT* list);
TGUI_EXPORT void* utilLinkedListEntryToDataP(UtilLinkedListEntryT* entry);
