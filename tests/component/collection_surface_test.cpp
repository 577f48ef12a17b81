#include <gtest/gtest.h>

#include "component/classes.h"
#include "tests/component/calls.h"
#include "users/utilisateurs.h"
#include "variables/variables.h"

namespace moxel::test {
namespace {

constexpr HRESULT kTypeMismatch = static_cast<HRESULT>(0x800A000D);

class CollectionSurfaceTest : public ProductTest {
 protected:
  void Add(std::u16string_view names) {
    for (const char16_t& name : names) users_->Add(*Keyed<User>({&name, 1}));
  }

  // An element's name; they have but one letter.
  static std::string KeyOf(const VARIANT& element) {
    return {static_cast<char>(GetOf(element.pdispVal, kKey).value.text().front())};
  }

  ObjectPtr<Utilisateurs> users_ = Utilisateurs::Create();
};

TEST_F(CollectionSurfaceTest, ItemIsTheDefaultMember) {
  Add(u"A2");
  Variant name(u"a");
  SHORT two = 2;
  auto item = [&](const VARIANT& index) {
    Reply reply = Call(users_.get(), DISPID_VALUE, DISPATCH_METHOD | DISPATCH_PROPERTYGET, {index});
    return reply.result == S_OK ? KeyOf(reply.value) : std::to_string(reply.number & 0xFFFF);
  };
  EXPECT_EQ(item(ByReference(VT_VARIANT, static_cast<VARIANT*>(&name))), "A");
  EXPECT_EQ(item(ByReference(VT_I2, &two)), "2");
  EXPECT_EQ(item(Variant::Missing()), "13");
}

TEST_F(CollectionSurfaceTest, AnEnumeratorFollowsWhatIsThereAndOutlivesItsCollection) {
  Add(u"ABCD");
  ObjectPtr<IEnumVARIANT> walk = ObjectPtr<IEnumVARIANT>::Query(users_->NewEnum().get()), copy;
  auto next = [](IEnumVARIANT* from, ULONG wanted) {
    std::vector<Variant> taken(wanted);
    ULONG fetched = 99;
    const HRESULT result = from->Next(wanted, taken.data(), &fetched);
    EXPECT_EQ(result, fetched == wanted ? S_OK : S_FALSE);
    std::string keys;
    for (ULONG i = 0; i < fetched; ++i) keys += KeyOf(taken[i]);
    return keys;
  };
  EXPECT_EQ(next(walk.get(), 2), "AB");
  for (const char16_t* name : {u"A", u"C"}) users_->Remove(name);  // behind, and the very next
  Add(u"E");
  ASSERT_EQ(walk->Clone(copy.Receive()), S_OK);
  EXPECT_EQ(next(walk.get(), 9), "DE");
  Add(u"F");
  EXPECT_EQ(next(walk.get(), 1), "F") << "added after the end was seen";
  EXPECT_EQ(copy->Skip(2), S_OK);
  users_ = nullptr;
  walk = nullptr;
  EXPECT_EQ(next(copy.get(), 1), "F");
  EXPECT_EQ(copy->Skip(1), S_FALSE);
  EXPECT_EQ(copy->Reset(), S_OK);
  Variant one;
  EXPECT_EQ(copy->Next(1, &one, nullptr), S_OK);
  EXPECT_EQ(copy->Next(1, nullptr, nullptr), E_POINTER);
  EXPECT_EQ(copy->Clone(nullptr), E_POINTER);
}

TEST_F(CollectionSurfaceTest, OptionalArgumentsOfUpdateMayBeOmittedInAnyWay) {
  const Variant one(std::int16_t{1}), empty(u""), fresh(u"new"), omitted = Variant::Missing();
  auto update = [](const std::vector<VARIANT>& positional, const Named& named = {}) {
    ObjectPtr<User> user = User::Create();
    Reply reply = Call(user.get(), 0x60030004, DISPATCH_METHOD, positional, named);
    const std::string answer = reply.result == S_OK ? "done" : std::to_string(reply.number & 0xFFFF);
    return answer + (user->Permission() ? " 1 " : " 0 ") + Shown(user->PasswordDecrypted());
  };
  EXPECT_EQ(update({one}), "done 1 ''");
  EXPECT_EQ(update({one, omitted, omitted, fresh}), "done 1 ''");
  EXPECT_EQ(update({one}, {{3, fresh}}), "done 1 ''");
  EXPECT_EQ(update({}, {{3, fresh}, {2, fresh}, {0, one}, {1, empty}}), "done 1 'new'");
  EXPECT_EQ(update({one}, {{2, fresh}, {3, fresh}}), "13 0 ''");
  EXPECT_EQ(update({one, omitted, fresh, fresh}), "13 0 ''");
  EXPECT_EQ(update({one, empty, fresh}), "1002 0 ''");
  EXPECT_EQ(update({one, empty, fresh, omitted}), "1002 0 ''");
}

TEST_F(CollectionSurfaceTest, ObjectsOfOtherMakersAreRefused) {
  ObjectPtr<Variables> variables = Variables::Create();
  ObjectPtr<Variable> variable = Variable::Create();
  // It answers to the right interface; nothing but IUnknown of it is called.
  Owner maker({IID__User}, u"X");
  _User *user = reinterpret_cast<_User*>(static_cast<IDispatch*>(&maker)), *no_user = nullptr;
  SHORT status = 7;
  EXPECT_EQ(users_->raw_DeleteUser(&user, &status), kTypeMismatch);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(users_->raw_Add(&no_user), E_POINTER);
  EXPECT_EQ(variables->raw_Add(reinterpret_cast<_Variable*>(user)), kTypeMismatch);
  EXPECT_EQ(variables->raw_DeleteVariable(nullptr, &maker, &status), E_POINTER);
  auto add = [&](const VARIANT& given) { return Call(users_.get(), 0x60030003, DISPATCH_METHOD, {given}); };
  EXPECT_EQ(add(Variant(&maker)).number, kTypeMismatch);
  EXPECT_EQ(add(Variant(variable.get())).result, DISP_E_TYPEMISMATCH);
  EXPECT_EQ(add(Bare(VT_DISPATCH)).result, E_POINTER);
  EXPECT_EQ(users_->Count() + variables->Count(), 0);
}

}  // namespace
}  // namespace moxel::test
