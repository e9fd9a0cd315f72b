#include "TwoArgumentsMethodVariant.h"

#include <utility>

#include "JniClass.h"
#include "JvmEnv.h"
#include "Log.h"
#include "TextConversion.h"

namespace {

const std::wstring& valueText(const std::wstring& path)
{
    return path;
}

std::wstring valueText(bool value)
{
    return value ? L"true" : L"false";
}

/// "name=value" of every property, for the log.
template <typename Properties>
std::vector<std::wstring> describe(const Properties& properties)
{
    std::vector<std::wstring> texts;
    texts.reserve(properties.size());
    for (const auto& [name, value] : properties) texts.push_back(name + L"=" + valueText(value));
    return texts;
}

}  // namespace

TwoArgumentsMethodVariant::TwoArgumentsMethodVariant(std::wstring methodName,
                                                     std::vector<std::wstring> arguments,
                                                     PathProperties pathProperties,
                                                     BooleanProperties booleanProperties)
    : MethodVariant(L"TwoArgumentsMethodVariant", "(Ljava/util/Map;[Ljava/lang/String;)V",
                    std::move(methodName), std::move(arguments)),
      pathProperties_(std::move(pathProperties)),
      booleanProperties_(std::move(booleanProperties))
{
}

void TwoArgumentsMethodVariant::call(JvmEnv& env, jclass javaClass,
                                     const std::wstring& className) const
{
    const JniClass interfaceClass(env.get(), javaClass, toModifiedUtf8(className));
    const JniObject map = newPropertyMap(env, className);
    const JniObject array = newStringArray(env, arguments(), className);

    logInfo({typeName(), L"call"}, L"Do call JMethod", L"class", className, L"method", methodName(),
            L"args", arguments(), L"pathProperties", describe(pathProperties_),
            L"booleanProperties", describe(booleanProperties_));
    getLogger().flush();
    announceCall();
    interfaceClass.callStaticVoidMethod(methodName(), signature(), map.get(), array.get());
    reportOutcome(env, className);
}

JniObject TwoArgumentsMethodVariant::newPropertyMap(JvmEnv& env,
                                                    const std::wstring& className) const
{
    const JniClass mapClass(env.get(), "java/util/HashMap");
    raiseIfThrown(env, className);
    JniObject map = mapClass.newObject("()V");
    raiseIfThrown(env, className);
    putBooleans(env, map, className);
    putPaths(env, map, className);
    return map;
}

void TwoArgumentsMethodVariant::putBooleans(JvmEnv& env, const JniObject& map,
                                            const std::wstring& className) const
{
    const JniClass booleanClass(env.get(), "java/lang/Boolean");
    raiseIfThrown(env, className);
    const JniObject yes = booleanClass.getStaticObjectField("TRUE", "Ljava/lang/Boolean;");
    const JniObject no = booleanClass.getStaticObjectField("FALSE", "Ljava/lang/Boolean;");
    for (const auto& [name, value] : booleanProperties_) {
        put(env, map, name, value ? yes : no, className);
    }
}

void TwoArgumentsMethodVariant::putPaths(JvmEnv& env, const JniObject& map,
                                         const std::wstring& className) const
{
    const JniClass pathsClass(env.get(), "java/nio/file/Paths");
    raiseIfThrown(env, className);
    const JniObject noMore = newStringArray(env, {}, className);
    for (const auto& [name, path] : pathProperties_) {
        const JniObject text = newString(env, path, className);
        const JniObject value = pathsClass.callStaticObjectMethod(
            "get", "(Ljava/lang/String;[Ljava/lang/String;)Ljava/nio/file/Path;", text.get(),
            noMore.get());
        raiseIfThrown(env, className);
        put(env, map, name, value, className);
    }
}

void TwoArgumentsMethodVariant::put(JvmEnv& env, const JniObject& map, const std::wstring& name,
                                    const JniObject& value, const std::wstring& className) const
{
    const JniObject key = newString(env, name, className);
    const JniObject before = map.callObjectMethod(
        "put", "(Ljava/lang/Object;Ljava/lang/Object;)Ljava/lang/Object;", key.get(), value.get());
    raiseIfThrown(env, className);
}
