#include "LinuxUtilsFactory.h"

#include "LinuxConsole.h"

std::unique_ptr<IConsole> LinuxUtilsFactory::createConsole(const std::wstring& coutPath,
                                                           const std::wstring& cerrPath,
                                                           std::wstring& errorText)
{
    return std::make_unique<LinuxConsole>(coutPath, cerrPath, errorText);
}

IOsUtilsFactory& getOsUtilsFactory()
{
    static IOsUtilsFactory& factory = *new LinuxUtilsFactory;
    return factory;
}
