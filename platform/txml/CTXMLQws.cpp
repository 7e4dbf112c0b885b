#include "CTXMLQws.h"

#include "TxmlReader.h"

bool CTXMLQws::parse(const char* data, std::size_t length)
{
    return txml::readDocument(data, length, *this, nullptr);
}
