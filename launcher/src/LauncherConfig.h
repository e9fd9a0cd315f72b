// LauncherConfig: the settings in launcher.yml, the optional file next to the
// launcher's executable. Made once by main on the main thread, immutable
// afterwards. Holds what was read, nothing (there is no file, or none is
// wanted), or why the file cannot be used: that is not thrown but kept, for
// main to print.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

class YamlNode;
struct ExpansionContext;

class LauncherConfig final {
public:
    using Texts = std::map<std::wstring, std::wstring>;

    /// The file in the executable's directory; nothing when `readFile` is
    /// false. `instanceRoot` may be empty. Throws LauncherOsException when the
    /// directory cannot be told.
    [[nodiscard]] static LauncherConfig read(const std::wstring& instanceRoot, bool readFile);
    /// The file in `directory`, which the variable "${launcher.dir}" stands
    /// for. Throws no LauncherException.
    [[nodiscard]] static LauncherConfig readFrom(const std::wstring& directory,
                                                 const std::wstring& instanceRoot);

    // Texts are empty when the file does not give them.
    [[nodiscard]] std::wstring getWorkDir() const;
    [[nodiscard]] std::wstring getServiceName() const;
    [[nodiscard]] std::wstring getJavaHome() const;
    [[nodiscard]] std::wstring getPidFile() const;
    [[nodiscard]] std::wstring getLogFile() const;
    [[nodiscard]] std::wstring getClassPath() const;
    [[nodiscard]] std::wstring getModulePath() const;
    [[nodiscard]] std::wstring getMainClass() const;
    [[nodiscard]] bool isQuiet() const;
    [[nodiscard]] const std::vector<std::wstring>& getJvmOptions() const { return jvmOptions_; }
    [[nodiscard]] const std::vector<std::wstring>& getMainClassArguments() const
    {
        return mainClassArguments_;
    }
    /// Texts of the start-up message by locale or language, or "default".
    [[nodiscard]] const Texts& getBanner() const { return banner_; }
    /// 8 to 65535; 8 when the file does not tell.
    [[nodiscard]] std::int32_t getMinimalJavaVersion() const { return minimalJavaVersion_; }

    [[nodiscard]] bool isFileRead() const { return fileRead_; }
    /// Empty when no file is wanted.
    [[nodiscard]] const std::wstring& getFileName() const { return fileName_; }
    [[nodiscard]] bool hasError() const { return !errorMessage_.empty(); }
    [[nodiscard]] const std::wstring& getErrorMessage() const { return errorMessage_; }
    /// 0 when there is no error.
    [[nodiscard]] std::uint32_t getErrorCode() const { return errorCode_; }
    void logState() const;

private:
    explicit LauncherConfig(std::wstring fileName);

    // The steps of reading throw LauncherException.
    void load(const std::wstring& directory, const std::wstring& instanceRoot);
    void interpret(const YamlNode* top, const ExpansionContext& context);
    /// Gives the entry to go on with, null at the end.
    const YamlNode* interpretEntry(const YamlNode& entry, const ExpansionContext& context);
    void readBanner(const YamlNode& entry, const ExpansionContext& context);
    void readMinimalJavaVersion(const YamlNode& entry, const ExpansionContext& context);
    [[nodiscard]] std::wstring getValue(const char* key) const;

    std::map<std::string, std::wstring> values_;
    std::vector<std::wstring> jvmOptions_;
    std::vector<std::wstring> mainClassArguments_;
    std::wstring fileName_;
    bool fileRead_ = false;
    std::int32_t minimalJavaVersion_ = 8;
    std::wstring errorMessage_;
    std::uint32_t errorCode_ = 0;
    Texts banner_;
};
