#include "platform/qt/process_environment.h"

#include <QString>
#include <QtGlobal>

namespace brivanta {

std::optional<std::string> ProcessEnvironment::value(const std::string &name) const
{
    const char *key = name.c_str();
    if (!qEnvironmentVariableIsSet(key))
        return std::nullopt;
    return qEnvironmentVariable(key).toStdString();
}

} // namespace brivanta
