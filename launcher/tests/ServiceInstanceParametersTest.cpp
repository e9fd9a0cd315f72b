#include "ServiceInstanceParameters.h"

#include "UnitTest.h"

namespace {

class ServiceInstanceParametersTest : public UnitTest {
protected:
    [[nodiscard]] std::unique_ptr<ServiceInstanceParameters> read(const std::string& ini) const
    {
        dir_.write("ini/hello", ini);
        return ServiceInstanceParameters::create(L"hello", dir_.wide("ini/"));
    }
    /// The messages of logState(), '@' standing for the directory.
    [[nodiscard]] Texts logged(const ServiceInstanceParameters& parameters) const
    {
        const std::size_t before = log_.lines().size();
        parameters.logState();
        Texts lines = log_.lines();
        lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(before));
        const std::wstring start = L"INFO ServiceInstanceParameters.logState: ";
        for (std::wstring& line : lines) {
            EXPECT_EQ(line.substr(0, start.size()), start);
            line.erase(0, start.size());
        }
        return lines;
    }

    const std::wstring readRecord_ =
        at(L"Reading service ini file: EOL type was detected by choosing most frequent one "
           L"filename=@/ini/hello");
};

TEST_F(ServiceInstanceParametersTest, ReadsJavaHomeAndJvmOptions)
{
    const auto parameters = read(
        "\xEF\xBB\xBFX=1\r\n# JAVA_HOME=/c\r\rJAVA_HOME=/old\r\n"
        "\t JAVA_OPT= -Da=b \n=no key\nno separator\n JAVA_HOME=\t/j dk \t\r\n"
        "JAVA_HOME =/x\njava_opt=y\nJAVA_OPT=");
    EXPECT_EQ(parameters->getJavaHome(), L"/j dk");
    EXPECT_EQ(parameters->getJvmOptions(), (Texts{L" -Da=b", L""}));
    const std::wstring unknown = L"Unknown option in the service ini file key=";
    const std::wstring start = L"ServiceInstanceParameters: ";
    const std::wstring home = L"fileName=@/ini/hello, --servicename=hello, --javahome=/j dk";
    EXPECT_EQ(
        logged(*parameters),
        (Texts{readRecord_, unknown + L"\uFEFFX", unknown + L"JAVA_HOME ", unknown + L"java_opt",
               start + L"parameters read from service ini file: " + at(home),
               start + L"JVM options read from service ini file: options=' -Da=b;'"}));
}

TEST_F(ServiceInstanceParametersTest, TellsWhyThereIsNothing)
{
    for (const char* one : {"JAVA_HOME=/j", "JAVA_OPT="}) {
        EXPECT_EQ(logged(*read(one)).size(), 3u) << one;
    }
    EXPECT_EQ(logged(*read("JAVA_HOME=\n")),
              (Texts{readRecord_,
                     L"ServiceInstanceParameters: no parameters read from service ini file"}));
    const std::wstring notFound = L"Service configuration file not found serviceName=";
    EXPECT_EQ(logged(*ServiceInstanceParameters::create(L"", dir_.wide("ini/"))),
              Texts{notFound + L", fileName=<unspecified>"});
    EXPECT_EQ(logged(*ServiceInstanceParameters::create(L"no", dir_.wide("ini/"))),
              Texts{at(notFound + L"no, fileName=@/ini/no")});
    EXPECT_EQ(logged(*ServiceInstanceParameters::create(L"ini", dir_.wide() + L"/")),
              Texts{at(L"Cannot open service configuration file fileName=@/ini, "
                       L"Exception=\"Cannot read file '@/ini'. Error: (21) Is a directory\"")});
}

}  // namespace
