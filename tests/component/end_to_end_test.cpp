// The component as a client has it: registered, created by program id, and nothing but the shared library
// behind it.
#include <gtest/gtest.h>

#include <map>
#include <sstream>

#include "moxel/late_bound.h"
#include "tests/component/calls.h"
#include "tests/component/slots.h"
#include "tests/support/configuration.h"

namespace moxel::test {
namespace {

constexpr const char* kConfiguration = R"(
    Configuration  Lang=dword:10000   Domain\Empty  Comment=Nothing
    Domain\Sales                 Comment=Orders  Admin=dword:1
    Domain\Sales\Var\Invoices    V/C=V  Type=dword:1  Value=dword:12    Init=dword:0
    Domain\Sales\Var\Rate        V/C=V  Type=dword:6  Value=real:2.5    Init=real:1.5
    Domain\Sales\Var\Secret      V/C=V  Type=dword:3  Value=hidden:abc  Init=hidden:start
    Domain\Sales\Var\Team        V/C=C  Type=dword:0  Value=Blue        Init=Red
    Scenarios\Backup  Domain=  Etat=dword:2   Scenarios\Invoices  Domain=Sales  Etat=dword:1
    Scenarios\Night              Domain=Sales  Dir=C:\Night  Traitement=dword:1  Etat=dword:3  UseSock=dword:1
                                 SockNum=dword:5001  Date Traitement=today  Hwnd=dword:7  Admin=dword:1
    Scenarios\Night\Ordre        tsk1=Load  tsk2=Check
    Scenarios\Night\Taches\Check  Etat=dword:2  Type=dword:4  ExecuteLe=today
    Scenarios\Night\Taches\Check\Action\OnErr  Status=S
    Scenarios\Night\Taches\Extra  Etat=dword:3  Scenarios\Night\Taches\Load  Etat=dword:3  Type=dword:1
    Scenarios\Night\User  user1=alice           Scenarios\User\alice  AccessPerm=dword:1
    Scenarios\Night\Var\Tries    V/C=V  Type=dword:1  Value=dword:3  Init=dword:0
    User\alice                   AccessPerm=dword:1  Password=hidden:secret
    User\bob                     AccessPerm=dword:0  Password=hidden:abc)";

// Whatever a call has left in the trees that calls change is gone afterwards.
void ConfigureAfresh() {
  ASSERT_EQ(RegFileBegin(), 0);
  for (const char* tree : {"Domain", "Scenarios", "User"}) {
    const std::vector<std::string> tokens = TokensOf(ConfigurationAt(tree));
    for (auto token = tokens.rbegin(); token != tokens.rend(); ++token)
      if (IsKey(*token)) RegDeleteKeyA(HKEY_LOCAL_MACHINE, AbsolutePath(*token).c_str());
  }
  ASSERT_EQ(RegFileCommit(), 0);
  Configure(kConfiguration);
}

class EndToEndTest : public LibraryTest {
 protected:
  EndToEndTest() {
    EXPECT_EQ(CallExport("DllRegisterServer"), S_OK);
    ConfigureAfresh();
  }
  ~EndToEndTest() override {
    EXPECT_EQ(CallExport("DllCanUnloadNow"), S_OK) << "no test leaves an object behind";
  }
};

ObjectPtr<IDispatch> New(const char16_t* program_id) {
  CLSID id{};
  ObjectPtr<IDispatch> object;
  EXPECT_EQ(CLSIDFromProgID(program_id, &id), S_OK);
  EXPECT_EQ(CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, object.ReceiveAny()), S_OK);
  return object;
}

std::u16string Utf16(std::string_view text) { return {text.begin(), text.end()}; }
std::string Plain(std::u16string_view text) { return {text.begin(), text.end()}; }

// The object at a path like "Domaines(Sales).Variables(Rate)" from a new root; no path is the root itself.
ObjectPtr<IDispatch> Reach(const std::string& path) {
  if (path == "RootVar") return New(u"MOXEL.RootVar");
  ObjectPtr<IDispatch> object = New(u"MOXEL.Root");
  std::istringstream steps(path);
  for (std::string step; std::getline(steps, step, '.');) {
    const std::size_t open = std::min(step.find('('), step.size());
    std::vector<Variant> key;
    if (open < step.size()) key.emplace_back(Utf16(step.substr(open + 1, step.size() - open - 2)));
    const Variant next = CallByName(object.get(), Utf16(step.substr(0, open)), DISPATCH_PROPERTYGET, key);
    object = ObjectPtr<IDispatch>(next.pdispVal);
  }
  return object;
}

// "7" a number, "'7" a text, "none" no object, "@path" an object of another tree, "@(key)" one of what is
// there at the path given, "@...=key" one under another key.
Variant ArgumentFrom(const std::string& text, const std::string& path) {
  if (text == "none") return static_cast<IDispatch*>(nullptr);
  if (text.starts_with('\'')) return Utf16(text.substr(1));
  if (text.starts_with('@')) {
    const std::size_t end = std::min(text.find('='), text.size());
    const ObjectPtr<IDispatch> object = Reach((text[1] == '(' ? path : "") + text.substr(1, end - 1));
    if (end < text.size()) CallByName(object.get(), u"key", DISPATCH_PROPERTYPUT, {Utf16(&text[end + 1])});
    return object.get();
  }
  const bool is_number = !text.empty() && text.find_first_not_of("-0123456789") == text.npos;
  return is_number ? Variant(static_cast<std::int16_t>(std::stoi(text))) : Variant(Utf16(text));
}

std::vector<Variant> ArgumentsFrom(const std::string& text, const std::string& path) {
  std::vector<Variant> arguments;
  std::istringstream stream(text.empty() ? text : text + ",");
  for (std::string each; std::getline(stream, each, ',');) arguments.push_back(ArgumentFrom(each, path));
  return arguments;
}

std::string KeyOf(const Variant& item) {
  return Plain((item.vt == VT_DISPATCH ? GetProperty(item.pdispVal, u"key") : item).ToText());
}

std::string ListOf(IUnknown* enumerator) {
  std::string list;
  const auto walk = ObjectPtr<IEnumVARIANT>::Query(enumerator);
  for (Variant item; walk->Next(1, &item, nullptr) == S_OK; item = {})
    list += (list.empty() ? "" : " ") + KeyOf(item);
  return "[" + list + "]";
}

// A value; an object with its key or the keys of what it holds.
std::string ShownWhole(const Variant& value) {
  if (value.vt == VT_UNKNOWN) return ListOf(value.punkVal);
  if (value.vt != VT_DISPATCH || !value.pdispVal) return Shown(value);
  if (NumberRaisedBy([&] { IdOf(value.pdispVal, u"Count"); }) != 0) return KeyOf(value);
  return ListOf(GetProperty(value.pdispVal, u"NewEnum").punkVal);
}

// One call of one published member, and what it answers: a property put what it reads afterwards, a method
// without result what the object holds afterwards, a failure its number, its source and its first words.
struct Row {
  Slot (*slot)();
  const char* object;
  DISPID id;
  const char *arguments, *expected;
};

template <auto kSlot>
constexpr auto Ask = [] { return Described<kSlot, true>(kSlot); };
template <auto kSlot>
constexpr auto Do = [] { return Described<kSlot, false>(kSlot); };

constexpr const char *kRoot = "", *kDomains = "Domaines", *kSales = "Domaines(Sales)";
constexpr const char *kScenarios = "Domaines(Sales).Scenarios", *kNight = "Domaines(Sales).Scenarios(Night)";
constexpr const char* kTasks = "Domaines(Sales).Scenarios(Night).Traitements";
constexpr const char* kCheck = "Domaines(Sales).Scenarios(Night).Traitements(Check)";
constexpr const char *kUsers = "Utilisateurs", *kAlice = "Utilisateurs(alice)";
constexpr const char *kVariables = "Domaines(Sales).Variables", *kRate = "Domaines(Sales).Variables(Rate)";

// The members of each interface stand in the order of its slots.
constexpr Row kRows[] = {
    {Ask<&_Root::get_Utilisateurs>, kRoot, 0x68030002, "", "[alice bob]"},
    {Do<&_Root::putref_Utilisateurs>, kRoot, 0x68030002, "@Scenarios(Backup).Utilisateurs", "[]"},
    {Ask<&_Root::get_Scenarios>, kRoot, 0x68030001, "", "[Backup User]"},
    {Do<&_Root::putref_Scenarios>, kRoot, 0x68030001, "@Domaines(Sales).Scenarios", "[Invoices Night]"},
    {Ask<&_Root::get_Domaines>, kRoot, 0x68030000, "", "[Empty Sales]"},
    {Do<&_Root::putref_Domaines>, kRoot, 0x68030000, "@Domaines", "[Empty Sales]"},
    {Ask<&_RootVar::raw_RecupVariable>, "RootVar", 0x60030000, "Sales,,Rate", "Rate"},
    {Do<&_Domaines::raw_Add>, kDomains, 0x60030001, "@(Sales)=Z", "[Empty Sales Z]"},
    {Ask<&_Domaines::raw_DeleteDomain>, kDomains, 0x60030002, "@(Sales),1", "I2 -1"},
    {Ask<&_Domaines::raw_DeleteDomain>, kDomains, 0x60030002, "@(Sales),0",
     "80040642 Domaines:DeleteDomain:"},
    {Ask<&_Domaines::raw_NewDomain>, kDomains, 0x60030003, "New,7", "New"},
    {Ask<&_Domaines::get_Item>, kDomains, 0, "sales", "Sales"},
    {Ask<&_Domaines::get_Item>, kDomains, 0, "'2", "800A0005 MOXEL: Invalid procedure call or argument"},
    {Ask<&_Domaines::get_Count>, kDomains, 0x68030000, "", "I4 2"},
    {Do<&_Domaines::raw_Remove>, kDomains, 0x60030004, "1", "[Sales]"},
    {Ask<&_Domaines::get_NewEnum>, kDomains, DISPID_NEWENUM, "", "[Empty Sales]"},
    {Ask<&_Domaine::get_key>, kSales, 0x40030000, "", "'Sales'"},
    {Do<&_Domaine::put_key>, kSales, 0x40030000, "Other", "'Other'"},
    {Ask<&_Domaine::raw_Initialize>, kSales, 0x60030003, "1,0", "I2 -1"},
    {Ask<&_Domaine::get_Comment>, kSales, 0x68030002, "", "'Orders'"},
    {Ask<&_Domaine::raw_Update>, kSales, 0x60030004, "7", "I2 -1"},
    {Ask<&_Domaine::get_Variables>, kSales, 0x68030001, "", "[Invoices Rate Secret Team]"},
    {Ask<&_Domaine::get_Scenarios>, kSales, 0x68030000, "", "[Invoices Night]"},
    {Do<&_Domaine::putref_Variables>, kSales, 0x68030001, "@Domaines(Empty).Variables", "[]"},
    {Do<&_Domaine::putref_Scenarios>, kSales, 0x68030000, "@Scenarios", "[Backup User]"},
    {Ask<&_Scenarios::raw_DeleteScenario>, kScenarios, 0x60030001, "@(Night),1", "I2 -1"},
    {Do<&_Scenarios::raw_Add>, kScenarios, 0x60030002, "@Scenarios(Backup)", "[Invoices Night Backup]"},
    {Ask<&_Scenarios::get_Item>, kScenarios, 0, "2", "Night"},
    {Ask<&_Scenarios::get_Count>, kScenarios, 0x68030000, "", "I4 2"},
    {Do<&_Scenarios::raw_Remove>, kScenarios, 0x60030003, "NIGHT", "[Invoices]"},
    {Ask<&_Scenarios::get_NewEnum>, kScenarios, DISPID_NEWENUM, "", "[Invoices Night]"},
    {Ask<&_Scenario::get_key>, kNight, 0x40030000, "", "'Night'"},
    {Do<&_Scenario::put_key>, kNight, 0x40030000, "Other", "'Other'"},
    {Ask<&_Scenario::raw_Initialize>, kNight, 0x6003000B, "2,1", "I2 -1"},
    {Ask<&_Scenario::get_Mode>, kNight, 0x6803000A, "", "I2 1"},
    {Ask<&_Scenario::get_Directory>, kNight, 0x68030009, "", "'C:\\Night'"},
    {Ask<&_Scenario::get_UseSocket>, kNight, 0x68030008, "", "I2 1"},
    {Ask<&_Scenario::get_Port>, kNight, 0x68030007, "", "I4 5001"},
    {Ask<&_Scenario::get_State>, kNight, 0x68030006, "", "I2 3"},
    {Ask<&_Scenario::get_Hwnd>, kNight, 0x68030005, "", "I4 7"},
    {Ask<&_Scenario::get_LastExe>, kNight, 0x68030004, "", "'today'"},
    {Ask<&_Scenario::get_Variables>, kNight, 0x68030003, "", "[Tries]"},
    {Do<&_Scenario::putref_Variables>, kNight, 0x68030003, "@Scenarios(Backup).Variables", "[]"},
    {Ask<&_Scenario::get_Traitements>, kNight, 0x68030002, "", "[Check Extra Load]"},
    {Do<&_Scenario::putref_Traitements>, kNight, 0x68030002, "@Scenarios(Backup).Traitements", "[]"},
    {Ask<&_Scenario::get_TraitementsSelected>, kNight, 0x68030001, "", "[Load Check]"},
    {Do<&_Scenario::putref_TraitementsSelected>, kNight, 0x68030001, "none", "[Load Check]"},
    {Ask<&_Scenario::get_Utilisateurs>, kNight, 0x68030000, "", "[alice]"},
    {Do<&_Scenario::putref_Utilisateurs>, kNight, 0x68030000, "@Utilisateurs", "[alice bob]"},
    {Do<&_Traitements::raw_Add>, kTasks, 0x60030001, "@(Check)=Z", "[Check Extra Load Z]"},
    {Ask<&_Traitements::get_Item>, kTasks, 0, "3", "Load"},
    {Ask<&_Traitements::raw_DeleteTraitement>, kTasks, 0x60030002, "@(Check),Night", "I2 -1"},
    {Ask<&_Traitements::get_Count>, kTasks, 0x68030000, "", "I4 3"},
    {Do<&_Traitements::raw_Remove>, kTasks, 0x60030003, "Extra", "[Check Load]"},
    {Ask<&_Traitements::get_NewEnum>, kTasks, DISPID_NEWENUM, "", "[Check Extra Load]"},
    {Ask<&_Traitement::get_key>, kCheck, 0x40030000, "", "'Check'"},
    {Do<&_Traitement::put_key>, kCheck, 0x40030000, "Other", "'Other'"},
    {Ask<&_Traitement::raw_Initialize>, kCheck, 0x60030006, "Night,4", "I2 -1"},
    {Ask<&_Traitement::get_TypeTask>, kCheck, 0x68030005, "", "I2 4"},
    {Ask<&_Traitement::get_State>, kCheck, 0x68030004, "", "I2 2"},
    {Ask<&_Traitement::get_Selected>, kCheck, 0x68030003, "", "I2 0"},
    {Do<&_Traitement::put_Selected>, kCheck, 0x68030003, "-7", "I2 -7"},
    {Ask<&_Traitement::get_LastExe>, kCheck, 0x68030002, "", "'today'"},
    {Ask<&_Traitement::get_StatusAct>, kCheck, 0x68030001, "", "'S   '"},
    {Ask<&_Traitement::get_Source>, kCheck, 0x68030000, "", "'Night'"},
    {Ask<&_Utilisateurs::raw_NewUser>, kUsers, 0x60030001, "carl,p,p,1", "carl"},
    {Ask<&_Utilisateurs::raw_DeleteUser>, kUsers, 0x60030002, "@(alice)", "I2 0"},
    {Do<&_Utilisateurs::raw_Add>, kUsers, 0x60030003, "@(alice)=Z", "[alice bob Z]"},
    {Ask<&_Utilisateurs::get_Item>, kUsers, 0, "2", "bob"},
    {Ask<&_Utilisateurs::get_Count>, kUsers, 0x68030000, "", "I4 2"},
    {Do<&_Utilisateurs::raw_Remove>, kUsers, 0x60030005, "1", "[bob]"},
    {Ask<&_Utilisateurs::get_NewEnum>, kUsers, DISPID_NEWENUM, "", "[alice bob]"},
    {Ask<&_User::get_key>, kAlice, 0x40030000, "", "'alice'"},
    {Do<&_User::put_key>, kAlice, 0x40030000, "Other", "'Other'"},
    {Ask<&_User::raw_Check>, kAlice, 0x60030003, "secret", "I2 -1"},
    {Ask<&_User::raw_Check>, kAlice, 0x60030003, "Secret", "800403E8 User:Update: Incorrect password"},
    {Ask<&_User::raw_Update>, kAlice, 0x60030004, "0,secret,new,new", "I2 -1"},
    {Do<&_User::put_Permission>, kAlice, 0x68030001, "0", "I2 0"},
    {Do<&_User::put_Permission>, kAlice, 0x68030001, "2", "800403EB User:Permission Property Let:"},
    {Ask<&_User::get_Permission>, kAlice, 0x68030001, "", "I2 1"},
    {Ask<&_User::get_Password>, kAlice, 0x68030000, "", "'******'"},
    {Ask<&_User::get_PasswordCrypted>, "Utilisateurs(bob)", 0x68030006, "", "'\\382\\157\\339'"},
    {Ask<&_User::get_PasswordDecrypted>, kAlice, 0x68030005, "", "'secret'"},
    {Do<&_User::put_PasswordCrypted>, kAlice, 0x68030006, "x", "'x'"},
    {Ask<&_Variables::raw_NewVariable>, kVariables, 0x60030001, "New,V,1,'5,'4,@Domaines(Sales)", "New"},
    {Do<&_Variables::raw_Add>, kVariables, 0x60030002, "@(Rate)=Z", "[Invoices Rate Secret Team Z]"},
    {Ask<&_Variables::get_Item>, kVariables, 0, "3", "Secret"},
    {Ask<&_Variables::get_Count>, kVariables, 0x68030000, "", "I4 4"},
    {Do<&_Variables::raw_Remove>, kVariables, 0x60030003, "2", "[Invoices Secret Team]"},
    {Ask<&_Variables::raw_DeleteVariable>, kVariables, 0x60030004, "@(Rate),@Domaines(Sales)", "I2 -1"},
    {Ask<&_Variables::get_NewEnum>, kVariables, DISPID_NEWENUM, "", "[Invoices Rate Secret Team]"},
    {Ask<&_Variable::get_key>, kRate, 0x40030000, "", "'Rate'"},
    {Do<&_Variable::put_key>, kRate, 0x40030000, "Other", "'Other'"},
    {Ask<&_Variable::raw_Duplicate>, kRate, 0x60030005, "Copy,@Domaines(Sales)", "I2 -1"},
    {Ask<&_Variable::raw_Update>, kRate, 0x60030006, "C,0,text,,@Domaines(Sales)", "I2 -1"},
    {Ask<&_Variable::raw_Update1>, kRate, 0x60030007, "V,6,3,1,none,Night_s", "I2 -1"},
    {Ask<&_Variable::raw_Initialize>, kRate, 0x60030008, "@Domaines(Sales)", "I2 -1"},
    {Ask<&_Variable::raw_Initialize1>, kRate, 0x60030009, "Domain\\Sales", "I2 -1"},
    {Ask<&_Variable::get_VarType>, kRate, 0x68030003, "", "'V'"},
    {Ask<&_Variable::get_Value>, kRate, 0x68030002, "", "R8 2.5"},
    {Ask<&_Variable::get_Init>, kRate, 0x68030001, "", "R8 1.5"},
    {Ask<&_Variable::get_DataType>, kRate, 0x68030000, "", "I2 6"},
};

Reply CallEarly(const Slot& slot, IDispatch* object, const std::vector<Variant>& arguments, DISPID) {
  Reply reply;
  reply.number = slot.call(object, arguments, reply.value);
  if (reply.number == S_OK) return reply;
  const ErrorText error = TakeErrorInfo();
  reply.source = error.source;
  reply.description = error.description;
  return reply;
}

Reply CallLate(const Slot& slot, IDispatch* object, const std::vector<Variant>& arguments, DISPID id) {
  static const std::map<std::string, int> kinds{{"get", 2}, {"put", 4}, {"putref", 8}, {"raw", 1}};
  EXPECT_EQ(IdOf(object, Utf16(slot.member)), id);
  std::vector<VARIANT> positional(arguments.begin(), arguments.end());
  Named named;
  if (slot.kind.starts_with("put")) {
    named.emplace_back(DISPID_PROPERTYPUT, positional.back());
    positional.pop_back();
  }
  Reply reply = Call(object, id, static_cast<WORD>(kinds.at(slot.kind)), positional, named);
  EXPECT_EQ(reply.result, reply.number == 0 ? S_OK : DISP_E_EXCEPTION);
  const ErrorText raised{true, reply.source, reply.description};
  EXPECT_EQ(TakeErrorInfo(), reply.number == 0 ? ErrorText{} : raised);
  return reply;
}

// What the row's call answers, and the registry afterwards.
std::pair<std::string, std::string> OutcomeOf(const Row& row, const Slot& slot, decltype(CallEarly) call) {
  ConfigureAfresh();
  const ObjectPtr<IDispatch> object = Reach(row.object);
  Reply reply = call(slot, object.get(), ArgumentsFrom(row.arguments, row.object), row.id);
  char number[16];
  std::snprintf(number, sizeof number, "%08X ", static_cast<unsigned>(reply.number));
  const std::string failure = number + Plain(reply.source) + ": " + Plain(reply.description);
  if (slot.kind.starts_with("put") && reply.number == 0)
    reply.value = GetProperty(object.get(), Utf16(slot.member));
  if (reply.value.is_empty()) reply.value = Variant(object.get());
  return {reply.number == 0 ? ShownWhole(reply.value) : failure, ConfigurationAt("")};
}

TEST_F(EndToEndTest, EveryMemberAnswersAlikeEarlyAndLateBound) {
  std::map<std::string, std::size_t> counts;
  for (const Row& row : kRows) {
    const Slot slot = row.slot();
    SCOPED_TRACE(slot.interface + " " + slot.kind + " " + slot.member + " " + row.arguments);
    std::size_t& count = counts[slot.interface];
    EXPECT_TRUE(slot.place == count || slot.place + 1 == count) << "at " << slot.place;
    count = slot.place + 1;
    const auto early = OutcomeOf(row, slot, CallEarly), late = OutcomeOf(row, slot, CallLate);
    EXPECT_EQ(early, late);
    const std::string expected = row.expected;
    EXPECT_EQ(early.first.substr(0, expected.starts_with("80") ? expected.size() : expected.npos), expected);
  }
  std::string members;
  for (const auto& [interface, count] : counts) members += interface + " " + std::to_string(count) + ", ";
  EXPECT_EQ(members,
            "Domaine 9, Domaines 7, Root 6, RootVar 1, Scenario 18, Scenarios 6, Traitement 10, "
            "Traitements 6, User 10, Utilisateurs 7, Variable 11, Variables 7, ");
}

// A client resets a domain before a run.
TEST_F(EndToEndTest, TheTypicalRequestChangesTheRunStateAndTheVariables) {
  const std::string before = ConfigurationAt("");
  const auto sales = ObjectPtr<_Domaine>::Query(Reach(kSales).get());
  EXPECT_EQ(ConfigurationAt(""), before) << "reading changes nothing";
  SHORT status = 0;
  EXPECT_EQ(sales->raw_Initialize(1, 1, &status), S_OK);
  EXPECT_EQ(status, VARIANT_TRUE);
  EXPECT_EQ(CallExport("DllCanUnloadNow"), S_FALSE) << "the domain keeps the library";
  const std::string after = ConfigurationAt("");
  ConfigureAfresh();
  Configure(R"(
      Domain\Sales               Admin=dword:0
      Domain\Sales\Var\Invoices  Value=dword:0      Domain\Sales\Var\Rate  Value=real:1.5
      Domain\Sales\Var\Secret    Value=hidden:start
      Scenarios\Invoices         Etat=dword:0  Admin=dword:0
      Scenarios\Night            Etat=dword:0  Admin=dword:0
      Scenarios\Night\Taches\Check  Etat=dword:0    Scenarios\Night\Taches\Load  Etat=dword:0
      Scenarios\Night\Var\Tries  Value=dword:0)");
  EXPECT_EQ(after, ConfigurationAt(""));
}

TEST_F(EndToEndTest, ObjectsGoOnOnBothSidesOfAFork) {
  const auto sales = Reach("Domaines(Sales)"), rate = Reach("Domaines(Sales).Variables(Rate)");
  auto initialize = [&] { return CallMethod(rate.get(), u"Initialize", {sales.get()}).ToI2(); };
  auto value = [](const char* path) { return Shown(GetProperty(Reach(path).get(), u"Value")); };
  const std::string before = value("Domaines(Sales).Variables(Rate)"),
                    initial = Shown(GetProperty(rate.get(), u"Init"));
  ASSERT_NE(before, initial);
  ASSERT_EQ(value("Domaines(Sales).Variables(Team)"), "'Blue'");
  Child child([&] {
    initialize();
    return value("Domaines(Sales).Variables(Rate)") + value("Domaines(Sales).Variables(Team)");
  });
  EXPECT_EQ(child.Answer(), initial + "'Blue'");
  EXPECT_EQ(value("Domaines(Sales).Variables(Rate)"), initial) << "the child's change";
  EXPECT_EQ(Shown(GetProperty(rate.get(), u"Value")), before) << "the parent's object holds what it held";
  initialize();
  EXPECT_EQ(Shown(GetProperty(rate.get(), u"Value")), initial);
}

}  // namespace
}  // namespace moxel::test
