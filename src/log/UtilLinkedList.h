#pragma once
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

void utilLinkedListInit(UtilLinkedListT* list);
// Appends at the tail.
void utilLinkedListAdd(UtilLinkedListT* list, UtilLinkedListEntryT* entry);
// Inserts `entry` after `after`; a null `after` inserts at the head.
void utilLinkedListInsert(UtilLinkedListT* list, UtilLinkedListEntryT* after,
                          UtilLinkedListEntryT* entry);
// Unlinks `entry` (which must be in `list`); the caller keeps its memory.
void utilLinkedListDel(UtilLinkedListT* list, UtilLinkedListEntryT* entry);
// Unlinks and free()s every entry: for entries allocated with malloc.
void utilLinkedListFree(UtilLinkedListT* list);
UtilLinkedListEntryT* utilLinkedListFirst(const UtilLinkedListT* list);
UtilLinkedListEntryT* utilLinkedListLast(const UtilLinkedListT* list);
UtilLinkedListEntryT* utilLinkedListNext(const UtilLinkedListEntryT* entry);
UtilLinkedListEntryT* utilLinkedListPrev(const UtilLinkedListEntryT* entry);
// Entry at position n from the head (0 is the first), or null.
UtilLinkedListEntryT* utilLinkedListNth(const UtilLinkedListT* list, int n);
// Unlinks and returns the first entry, or null when the list is empty.
UtilLinkedListEntryT* utilLinkedListGet(UtilLinkedListT* list);
// First entry whose data `match` accepts (non-zero), or null.
UtilLinkedListEntryT* utilLinkedListFind(const UtilLinkedListT* list,
                                         int (*match)(const void* data, const void* key),
                                         const void* key);
int utilLinkedListCount(const UtilLinkedListT* list);
void* utilLinkedListEntryToDataP(UtilLinkedListEntryT* entry);
