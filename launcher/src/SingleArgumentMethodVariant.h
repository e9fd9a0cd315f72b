// SingleArgumentMethodVariant: `static void method(String[] arguments)`.
#pragma once

#include <string>
#include <vector>

#include "MethodVariant.h"

class SingleArgumentMethodVariant final : public MethodVariant {
public:
    SingleArgumentMethodVariant(std::wstring methodName, std::vector<std::wstring> arguments);

    void call(JvmEnv& env, jclass javaClass, const std::wstring& className) const override;
};
