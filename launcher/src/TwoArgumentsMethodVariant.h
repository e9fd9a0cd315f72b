// TwoArgumentsMethodVariant: `static void method(Map properties, String[]
// arguments)`. The map is a HashMap of the launcher's properties: a Boolean
// or a java.nio.file.Path under each name.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "MethodVariant.h"

class TwoArgumentsMethodVariant final : public MethodVariant {
public:
    /// Name to path; an empty path is the empty java.nio.file.Path.
    using PathProperties = std::map<std::wstring, std::wstring>;
    using BooleanProperties = std::map<std::wstring, bool>;

    TwoArgumentsMethodVariant(std::wstring methodName, std::vector<std::wstring> arguments,
                              PathProperties pathProperties, BooleanProperties booleanProperties);

    void call(JvmEnv& env, jclass javaClass, const std::wstring& className) const override;

private:
    [[nodiscard]] JniObject newPropertyMap(JvmEnv& env, const std::wstring& className) const;
    void putBooleans(JvmEnv& env, const JniObject& map, const std::wstring& className) const;
    void putPaths(JvmEnv& env, const JniObject& map, const std::wstring& className) const;
    void put(JvmEnv& env, const JniObject& map, const std::wstring& name, const JniObject& value,
             const std::wstring& className) const;

    PathProperties pathProperties_;
    BooleanProperties booleanProperties_;
};
