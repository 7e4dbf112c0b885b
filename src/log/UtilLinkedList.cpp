#include "log/UtilLinkedList.h"

#include <cstdlib>

void utilLinkedListInit(UtilLinkedListT* list)
{
    if (!list)
        return;
    list->head = nullptr;
    list->tail = nullptr;
    list->count = 0;
}

void utilLinkedListAdd(UtilLinkedListT* list, UtilLinkedListEntryT* entry)
{
    if (!list || !entry)
        return;
    entry->next = nullptr;
    entry->prev = list->tail;
    if (list->tail)
        list->tail->next = entry;
    else
        list->head = entry;
    list->tail = entry;
    ++list->count;
}

void utilLinkedListInsert(UtilLinkedListT* list, UtilLinkedListEntryT* after,
                          UtilLinkedListEntryT* entry)
{
    if (!list || !entry)
        return;
    entry->prev = after;
    entry->next = after ? after->next : list->head;
    if (entry->next)
        entry->next->prev = entry;
    else
        list->tail = entry;
    if (after)
        after->next = entry;
    else
        list->head = entry;
    ++list->count;
}

void utilLinkedListDel(UtilLinkedListT* list, UtilLinkedListEntryT* entry)
{
    if (!list || !entry || list->count <= 0)
        return;
    if (entry->prev)
        entry->prev->next = entry->next;
    else if (list->head == entry)
        list->head = entry->next;
    else
        return;  // not in this list
    if (entry->next)
        entry->next->prev = entry->prev;
    else
        list->tail = entry->prev;
    entry->next = entry->prev = nullptr;
    --list->count;
}

void utilLinkedListFree(UtilLinkedListT* list)
{
    if (!list)
        return;
    UtilLinkedListEntryT* entry = list->head;
    while (entry) {
        UtilLinkedListEntryT* next = entry->next;
        free(entry);
        entry = next;
    }
    utilLinkedListInit(list);
}

UtilLinkedListEntryT* utilLinkedListFirst(const UtilLinkedListT* list)
{
    return list ? list->head : nullptr;
}

UtilLinkedListEntryT* utilLinkedListLast(const UtilLinkedListT* list)
{
    return list ? list->tail : nullptr;
}

UtilLinkedListEntryT* utilLinkedListNext(const UtilLinkedListEntryT* entry)
{
    return entry ? entry->next : nullptr;
}

UtilLinkedListEntryT* utilLinkedListPrev(const UtilLinkedListEntryT* entry)
{
    return entry ? entry->prev : nullptr;
}

UtilLinkedListEntryT* utilLinkedListNth(const UtilLinkedListT* list, int n)
{
    if (!list || n < 0 || n >= list->count)
        return nullptr;
    UtilLinkedListEntryT* entry = list->head;
    while (entry && n-- > 0)
        entry = entry->next;
    return entry;
}

UtilLinkedListEntryT* utilLinkedListGet(UtilLinkedListT* list)
{
    UtilLinkedListEntryT* entry = list ? list->head : nullptr;
    if (entry)
        utilLinkedListDel(list, entry);
    return entry;
}

UtilLinkedListEntryT* utilLinkedListFind(const UtilLinkedListT* list,
                                         int (*match)(const void* data, const void* key),
                                         const void* key)
{
    if (!list || !match)
        return nullptr;
    for (UtilLinkedListEntryT* entry = list->head; entry; entry = entry->next) {
        if (match(entry + 1, key))
            return entry;
    }
    return nullptr;
}

int utilLinkedListCount(const UtilLinkedListT* list)
{
    return list ? list->count : 0;
}

void* utilLinkedListEntryToDataP(UtilLinkedListEntryT* entry)
{
    return entry ? static_cast<void*>(entry + 1) : nullptr;
}
