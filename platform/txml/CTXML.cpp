#include "CTXML.h"

#include "CTXMLUriLib.h"

CTXML::CTXML()
{
    CTXML::reset();
}

void CTXML::reset()
{
    flags = 0;
    uri[0] = 0;
    eventType = 0;
    eventFlags = 0;
    data[0] = 0;
    pairs.reset();
    marker = 0;
    error[0] = 0;
}

const char* CTXML::value(int varNumber) const
{
    return pairs.value(CTXMLUriLib::varname(varNumber));
}
