#include "ServiceInstanceParameters.h"

#include "UnitTest.h"

namespace {

using ServiceInstanceParametersTest = UnitTest;

TEST_F(ServiceInstanceParametersTest, LogsWhatItHasReadOrWhyThereIsNothing)
{
    dir_.write("full",
               "\xEF\xBB\xBFX=1\r\n# JAVA_HOME=/c\r\rJAVA_HOME=/old\r\n"
               "\t JAVA_OPT= -Da=b \n=no key\nno separator\n JAVA_HOME=\t/j dk \t\r\n"
               "JAVA_HOME =/x\njava_opt=y\nJAVA_OPT=");
    dir_.write("idle", "JAVA_HOME=\n");
    std::filesystem::create_directory(dir_ / "dir");
    const std::wstring read =
        L"Reading service ini file: EOL type was detected by choosing most frequent one "
        L"filename=@/";
    const std::wstring unknown = L"Unknown option in the service ini file key=";
    const std::wstring parameters = L"ServiceInstanceParameters: ";
    const std::pair<std::wstring, Texts> cases[] = {
        {L"full",
         {read + L"full", unknown + L"\uFEFFX", unknown + L"JAVA_HOME ", unknown + L"java_opt",
          parameters + L"parameters read from service ini file: fileName=@/full, "
                       L"--servicename=full, --javahome=/j dk",
          parameters + L"JVM options read from service ini file: options=' -Da=b;'"}},
        {L"idle", {read + L"idle", parameters + L"no parameters read from service ini file"}},
        {L"", {L"Service configuration file not found serviceName=, fileName=<unspecified>"}},
        {L"dir",
         {L"Cannot open service configuration file fileName=@/dir, "
          L"Exception=\"Cannot read file '@/dir'. Error: (21) Is a directory\""}},
    };
    for (const auto& [name, messages] : cases) {
        const RecordingLogger log;
        ServiceInstanceParameters::create(name, dir_.wide() + L"/")->logState();
        Texts records;
        for (const std::wstring& message : messages) {
            records.push_back(at(L"INFO ServiceInstanceParameters.logState: " + message));
        }
        EXPECT_EQ(log.lines(), records);
    }
}

}  // namespace
