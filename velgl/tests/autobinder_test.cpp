#include <velgl/autobinder.h>

#include <type_traits>

#include <gmock/gmock.h>

namespace Atelier::Vel::Testing {

namespace {

class MockBindable : public Bindable {
public:
    MOCK_METHOD(bool, bind, (), (override));
    MOCK_METHOD(void, unbind, (), (override));
};

} // namespace

static_assert(std::is_convertible_v<Bindable*, AutoBinder>);

TEST(AutoBinderTest, BindsForItsLifetime) {
    testing::StrictMock<MockBindable> bindable;
    const testing::InSequence inOrder;
    EXPECT_CALL(bindable, bind).WillOnce(testing::Return(true));
    EXPECT_CALL(bindable, unbind);
    const AutoBinder binder(&bindable);
}

TEST(AutoBinderTest, UnbindsAlsoAfterABindThatFailed) {
    testing::StrictMock<MockBindable> bindable;
    EXPECT_CALL(bindable, bind).WillOnce(testing::Return(false));
    EXPECT_CALL(bindable, unbind);
    const AutoBinder binder(&bindable);
}

TEST(AutoBinderTest, NullBindsNothing) {
    const AutoBinder binder(nullptr);
}

} // namespace Atelier::Vel::Testing
