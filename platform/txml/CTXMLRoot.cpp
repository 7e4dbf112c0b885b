#include "CTXMLRoot.h"

#include "TxmlReader.h"

CTXMLRoot::CTXMLRoot()
{
    appStatus = 0;
}

void CTXMLRoot::reset()
{
    CTXML::reset();
    appStatus = 0;
    translations.clear();
    softkeys.reset(tavoElementSoftkeys);
    flyout.reset();
    lineKeys.reset();
    listMenu.clear();
}

bool CTXMLRoot::parse(const char* data, std::size_t length)
{
    return txml::readDocument(data, length, *this, this);
}
