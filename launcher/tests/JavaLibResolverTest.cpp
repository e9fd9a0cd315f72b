#include "JavaLibResolver.h"

#include "UnitTest.h"

namespace {

using JavaLibResolverTest = UnitTest;

TEST_F(JavaLibResolverTest, PrefersTheOlderLayoutsAndAddsASeparatorOnlyWhereNoneIs)
{
    const JavaLibResolver resolver;
    EXPECT_EQ(raised([&] { return resolver.resolve(dir_.wide()); }), L"4 Cannot find JVM library");
    for (const char* place :
         {"lib/server/libjvm.so", "lib/amd64/server/libjvm.so", "jre/lib/amd64/server/libjvm.so"}) {
        dir_.write(place, "");
        EXPECT_EQ(resolver.resolve(dir_.wide()), dir_.wide(place));
        EXPECT_EQ(resolver.resolve(dir_.wide() + L"/"), dir_.wide(place));
    }
    const std::string withBackslash = dir_.write("\\jre/lib/amd64/server/libjvm.so", "");
    EXPECT_EQ(resolver.resolve(dir_.wide("\\")), toWide(withBackslash));
}

}  // namespace
