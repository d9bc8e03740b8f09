#include "model/fatal.h"

#include <QtGlobal>

namespace brivanta {

void fatal(const char *reason)
{
    qFatal("%s", reason);
}

} // namespace brivanta
