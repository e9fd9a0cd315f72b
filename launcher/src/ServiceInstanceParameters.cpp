#include "ServiceInstanceParameters.h"

#include <utility>

#include "FileContent.h"
#include "IFileUtils.h"
#include "IOsUtilsFactory.h"
#include "LauncherException.h"
#include "Log.h"
#include "MessageCatalogue.h"
#include "MessageIds.h"
#include "TextLines.h"
#include "TextTrim.h"

namespace {

constexpr wchar_t kClass[] = L"ServiceInstanceParameters";
constexpr wchar_t kLogState[] = L"logState";
constexpr wchar_t kBlanks[] = L" \t";

}  // namespace

ServiceInstanceParameters::ServiceInstanceParameters(std::wstring serviceName)
    : serviceName_(std::move(serviceName))
{
}

std::unique_ptr<ServiceInstanceParameters> ServiceInstanceParameters::create(
    const std::wstring& serviceName, const std::wstring& directory)
{
    std::unique_ptr<ServiceInstanceParameters> parameters(
        new ServiceInstanceParameters(serviceName));
    if (serviceName.empty()) return parameters;
    parameters->fileName_ = directory + serviceName;
    try {
        parameters->readFile();
    } catch (const LauncherException& e) {
        parameters->errorMessage_ = e.message();
    }
    return parameters;
}

void ServiceInstanceParameters::logState() const
{
    if (!errorMessage_.empty()) {
        logInfo({kClass, kLogState}, getMessage(IDS_CANNOT_FIND_INI_IN_SERVICE), L"fileName",
                getFileName(), L"Exception", errorMessage_);
    } else if (fileRead_) {
        logFileRead();
    } else {
        logInfo({kClass, kLogState}, getMessage(IDS_SERVICE_CONFIG_NOT_FOUND), L"serviceName",
                serviceName_, L"fileName", getFileName());
    }
}

std::wstring ServiceInstanceParameters::getFileName() const
{
    return fileName_.empty() ? L"<unspecified>" : fileName_;
}

void ServiceInstanceParameters::readFile()
{
    const IFileUtils& files = getOsUtilsFactory().getFileUtils();
    if (!files.fileExists(fileName_)) return;
    const std::shared_ptr<FileContent> content = files.readFile(fileName_);
    TextLines lines(content->view());
    while (const auto line = lines.next()) interpret(trim(*line, kBlanks));
    fileRead_ = true;
}

void ServiceInstanceParameters::interpret(std::wstring_view line)
{
    const std::size_t separator = line.find(L'=');
    if (line.starts_with(L'#') || separator == std::wstring_view::npos) return;
    const std::wstring_view key = line.substr(0, separator);  // a blank before the '=' included
    const std::wstring_view value = line.substr(separator + 1);
    if (key == L"JAVA_HOME") {
        javaHome_ = trim(value, kBlanks);
    } else if (key == L"JAVA_OPT") {
        jvmOptions_.emplace_back(value);
    } else if (!key.empty()) {
        unknownOptions_.emplace_back(key);
    }
}

void ServiceInstanceParameters::logFileRead() const
{
    // No line end is chosen: the record is what logs are searched for.
    logInfo({kClass, kLogState},
            L"Reading service ini file: EOL type was detected by choosing most frequent one",
            L"filename", getFileName());
    for (const std::wstring& key : unknownOptions_) {
        logInfo({kClass, kLogState}, L"Unknown option in the service ini file", L"key", key);
    }
    if (javaHome_.empty() && jvmOptions_.empty()) {
        logInfo({kClass, kLogState},
                L"ServiceInstanceParameters: no parameters read from service ini file");
        return;
    }
    logInfo({kClass, kLogState},
            L"ServiceInstanceParameters: parameters read from service ini file:", L"fileName",
            getFileName(), L"--servicename", serviceName_, L"--javahome", javaHome_);
    logInfo({kClass, kLogState},
            L"ServiceInstanceParameters: JVM options read from service ini file:", L"options",
            jvmOptions_);
}
