// The component as a client has it: registered, created by program id, and nothing but the shared library
// behind it.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <sstream>

#include "moxel/late_bound.h"
#include "tests/component/calls.h"
#include "tests/component/slots.h"
#include "tests/support/configuration.h"

namespace moxel::test {
namespace {

constexpr const char* kConfiguration = R"(
    Configuration                Lang=dword:10000
    Domain\Empty                 Comment=Nothing
    Domain\Sales                 Comment=Orders  Admin=dword:1
    Domain\Sales\Var\Invoices    V/C=V  Type=dword:1  Value=dword:12    Init=dword:0
    Domain\Sales\Var\Rate        V/C=V  Type=dword:6  Value=real:2.5    Init=real:1.5
    Domain\Sales\Var\Secret      V/C=V  Type=dword:3  Value=hidden:abc  Init=hidden:start
    Domain\Sales\Var\Team        V/C=C  Type=dword:0  Value=Blue        Init=Red
    Scenarios\Backup             Domain=       Etat=dword:2
    Scenarios\Invoices           Domain=Sales  Etat=dword:1
    Scenarios\Night              Domain=Sales  Dir=C:\Night  Traitement=dword:1  Etat=dword:3  UseSock=dword:1
                                 SockNum=dword:5001  Date Traitement=today  Hwnd=dword:7  Admin=dword:1
    Scenarios\Night\Ordre        tsk1=Load  tsk2=Check
    Scenarios\Night\Taches\Check  Etat=dword:2  Type=dword:4  ExecuteLe=today
    Scenarios\Night\Taches\Check\Action\OnErr  Status=S
    Scenarios\Night\Taches\Extra  Etat=dword:3
    Scenarios\Night\Taches\Load  Etat=dword:3  Type=dword:1
    Scenarios\Night\User         user1=alice
    Scenarios\Night\Var\Tries    V/C=V  Type=dword:1  Value=dword:3  Init=dword:0
    Scenarios\User\alice         AccessPerm=dword:1
    User\alice                   AccessPerm=dword:1  Password=hidden:secret
    User\bob                     AccessPerm=dword:0  Password=hidden:abc)";

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

class EndToEndTest : public RegistryTest {
 protected:
  EndToEndTest() {
    const auto bin = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    library_ = ::dlopen((bin.parent_path() / "lib" / "libmoxel.so").c_str(), RTLD_NOW | RTLD_LOCAL);
    EXPECT_EQ(CallExport("DllRegisterServer"), S_OK);
    ConfigureAfresh();
  }
  ~EndToEndTest() override {
    EXPECT_EQ(CallExport("DllCanUnloadNow"), S_OK) << "no test leaves an object behind";
    if (library_) ::dlclose(library_);
  }

  HRESULT CallExport(const char* name) const {
    auto* entry = reinterpret_cast<HRESULT (*)()>(library_ ? ::dlsym(library_, name) : nullptr);
    return entry ? entry() : E_FAIL;
  }

  void* library_ = nullptr;
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

// "7" a number, "'7" a text, "none" no object, "@path" an object of another tree, "@path=key" under that key.
Variant ArgumentFrom(const std::string& text) {
  if (text == "null") return Variant::Null();
  if (text == "missing") return Variant::Missing();
  if (text == "none") return static_cast<IDispatch*>(nullptr);
  if (text.starts_with('\'')) return Utf16(text.substr(1));
  if (text.starts_with('@')) {
    const std::size_t end = std::min(text.find('='), text.size());
    const ObjectPtr<IDispatch> object = Reach(text.substr(1, end - 1));
    if (end < text.size())
      CallByName(object.get(), u"key", DISPATCH_PROPERTYPUT, {Utf16(text.substr(end + 1))});
    return object.get();
  }
  const bool is_number = !text.empty() && text.find_first_not_of("-0123456789") == text.npos;
  return is_number ? Variant(static_cast<std::int16_t>(std::stoi(text))) : Variant(Utf16(text));
}

std::vector<Variant> ArgumentsFrom(const std::string& text) {
  std::vector<Variant> arguments;
  std::istringstream stream(text.empty() ? text : text + ",");
  for (std::string each; std::getline(stream, each, ',');) arguments.push_back(ArgumentFrom(each));
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

// A value; an object, which has the interface, with its key or the keys of what it holds.
std::string ShownAs(const IID& interface, const Variant& value) {
  if (value.vt == VT_UNKNOWN) return ListOf(value.punkVal);
  if (value.vt != VT_DISPATCH || !value.pdispVal) return Shown(value);
  ObjectPtr<IUnknown> face;
  EXPECT_EQ(value.pdispVal->QueryInterface(interface, face.ReceiveAny()), S_OK);
  if (NumberRaisedBy([&] { IdOf(value.pdispVal, u"Count"); }) != 0) return KeyOf(value);
  return ListOf(GetProperty(value.pdispVal, u"NewEnum").punkVal);
}

// One call of one published member, and what it answers: a property put what it reads afterwards, a method
// without result what the object holds afterwards, a failure its number, its source and its first words.
struct Row {
  Slot slot;
  std::string object;
  DISPID id;
  std::string arguments, expected;
};
using Rows = std::vector<Row>;

template <auto kSlot, bool kHasResult>
Row RowOf(std::string object, DISPID id, std::string arguments, std::string expected) {
  constexpr std::size_t kArguments = ParametersOf(kSlot) - (kHasResult ? 1 : 0);
  return {Described<kSlot, kHasResult>(kSlot, std::make_index_sequence<kArguments>()), object, id, arguments,
          expected};
}
template <auto kSlot>
constexpr auto Ask = RowOf<kSlot, true>;
template <auto kSlot>
constexpr auto Do = RowOf<kSlot, false>;

// The members of each interface stand in the order of its slots.
Rows RootRows() {
  using I = _Root;
  const std::string root;
  return {
      Ask<&I::get_Utilisateurs>(root, 0x68030002, "", "[alice bob]"),
      Do<&I::putref_Utilisateurs>(root, 0x68030002, "@Scenarios(Backup).Utilisateurs", "[]"),
      Ask<&I::get_Scenarios>(root, 0x68030001, "", "[Backup User]"),
      Do<&I::putref_Scenarios>(root, 0x68030001, "@Domaines(Sales).Scenarios", "[Invoices Night]"),
      Do<&I::putref_Scenarios>(root, 0x68030001, "none", "[Backup User]"),
      Ask<&I::get_Domaines>(root, 0x68030000, "", "[Empty Sales]"),
      Do<&I::putref_Domaines>(root, 0x68030000, "@Domaines", "[Empty Sales]"),
      Ask<&_RootVar::raw_RecupVariable>("RootVar", 0x60030000, "Sales,,Rate", "Rate"),
      Ask<&_RootVar::raw_RecupVariable>("RootVar", 0x60030000, "Sales,,rate", "no object"),
  };
}

Rows DomainRows() {
  using C = _Domaines;
  using I = _Domaine;
  const std::string all = "Domaines", one = "Domaines(Sales)";
  return {
      Do<&C::raw_Add>(all, 0x60030001, "@Domaines(Sales)=Z", "[Empty Sales Z]"),
      Do<&C::raw_Add>(all, 0x60030001, "@Domaines(Sales)", "800A01C9 MOXEL: This key is already associated"),
      Ask<&C::raw_DeleteDomain>(all, 0x60030002, "@Domaines(Sales),1", "I2 -1"),
      Ask<&C::raw_DeleteDomain>(all, 0x60030002, "@Domaines(Sales),0",
                                "80040642 Domaines:DeleteDomain: This"),
      Ask<&C::raw_NewDomain>(all, 0x60030003, "New,7", "New"),
      Ask<&C::raw_NewDomain>(all, 0x60030003, ",", "80040641 Domaines:NewDomain: Enter domain name"),
      Ask<&C::get_Item>(all, 0, "sales", "Sales"),
      Ask<&C::get_Item>(all, 0, "'2", "800A0005 MOXEL: Invalid procedure call or argument"),
      Ask<&C::get_Count>(all, 0x68030000, "", "I4 2"),
      Do<&C::raw_Remove>(all, 0x60030004, "1", "[Sales]"),
      Do<&C::raw_Remove>(all, 0x60030004, "3", "800A0009 MOXEL: Subscript out of range"),
      Ask<&C::get_NewEnum>(all, DISPID_NEWENUM, "", "[Empty Sales]"),
      Ask<&I::get_key>(one, 0x40030000, "", "'Sales'"),
      Do<&I::put_key>(one, 0x40030000, "Other", "'Other'"),
      Ask<&I::raw_Initialize>(one, 0x60030003, "1,0", "I2 -1"),
      Ask<&I::get_Comment>(one, 0x68030002, "", "'Orders'"),
      Ask<&I::raw_Update>(one, 0x60030004, "7", "I2 -1"),
      Ask<&I::raw_Update>(one, 0x60030004, "null", "800A005E MOXEL: Invalid use of Null"),
      Ask<&I::get_Variables>(one, 0x68030001, "", "[Invoices Rate Secret Team]"),
      Ask<&I::get_Scenarios>(one, 0x68030000, "", "[Invoices Night]"),
      Do<&I::putref_Variables>(one, 0x68030001, "@Domaines(Empty).Variables", "[]"),
      Do<&I::putref_Scenarios>(one, 0x68030000, "@Scenarios", "[Backup User]"),
  };
}

Rows ScenarioRows() {
  using C = _Scenarios;
  using I = _Scenario;
  const std::string all = "Domaines(Sales).Scenarios", one = all + "(Night)", other = "@Scenarios(Backup)";
  return {
      Ask<&C::raw_DeleteScenario>(all, 0x60030001, "@" + one + ",1", "I2 -1"),
      Ask<&C::raw_DeleteScenario>(all, 0x60030001, "@" + one + ",0",
                                  "800406A6 Scenarios:DeleteScenario: This"),
      Do<&C::raw_Add>(all, 0x60030002, other, "[Invoices Night Backup]"),
      Ask<&C::get_Item>(all, 0, "2", "Night"),
      Ask<&C::get_Count>(all, 0x68030000, "", "I4 2"),
      Do<&C::raw_Remove>(all, 0x60030003, "NIGHT", "[Invoices]"),
      Ask<&C::get_NewEnum>(all, DISPID_NEWENUM, "", "[Invoices Night]"),
      Ask<&I::get_key>(one, 0x40030000, "", "'Night'"),
      Do<&I::put_key>(one, 0x40030000, "Other", "'Other'"),
      Ask<&I::raw_Initialize>(one, 0x6003000B, "2,1", "I2 -1"),
      Ask<&I::get_Mode>(one, 0x6803000A, "", "I2 1"),
      Ask<&I::get_Directory>(one, 0x68030009, "", "'C:\\Night'"),
      Ask<&I::get_UseSocket>(one, 0x68030008, "", "I2 1"),
      Ask<&I::get_Port>(one, 0x68030007, "", "I4 5001"),
      Ask<&I::get_State>(one, 0x68030006, "", "I2 3"),
      Ask<&I::get_Hwnd>(one, 0x68030005, "", "I4 7"),
      Ask<&I::get_LastExe>(one, 0x68030004, "", "'today'"),
      Ask<&I::get_Variables>(one, 0x68030003, "", "[Tries]"),
      Do<&I::putref_Variables>(one, 0x68030003, other + ".Variables", "[]"),
      Ask<&I::get_Traitements>(one, 0x68030002, "", "[Check Extra Load]"),
      Do<&I::putref_Traitements>(one, 0x68030002, other + ".Traitements", "[]"),
      Ask<&I::get_TraitementsSelected>(one, 0x68030001, "", "[Load Check]"),
      Do<&I::putref_TraitementsSelected>(one, 0x68030001, other + ".TraitementsSelected", "[]"),
      Ask<&I::get_Utilisateurs>(one, 0x68030000, "", "[alice]"),
      Do<&I::putref_Utilisateurs>(one, 0x68030000, "@Utilisateurs", "[alice bob]"),
  };
}

Rows TaskRows() {
  using C = _Traitements;
  using I = _Traitement;
  const std::string all = "Domaines(Sales).Scenarios(Night).Traitements", one = all + "(Check)";
  return {
      Do<&C::raw_Add>(all, 0x60030001, "@" + one + "=Z", "[Check Extra Load Z]"),
      Ask<&C::get_Item>(all, 0, "3", "Load"),
      Ask<&C::raw_DeleteTraitement>(all, 0x60030002, "@" + one + ",Night", "I2 -1"),
      Ask<&C::get_Count>(all, 0x68030000, "", "I4 3"),
      Do<&C::raw_Remove>(all, 0x60030003, "Extra", "[Check Load]"),
      Ask<&C::get_NewEnum>(all, DISPID_NEWENUM, "", "[Check Extra Load]"),
      Ask<&I::get_key>(one, 0x40030000, "", "'Check'"),
      Do<&I::put_key>(one, 0x40030000, "Other", "'Other'"),
      Ask<&I::raw_Initialize>(one, 0x60030006, "Night,4", "I2 -1"),
      Ask<&I::get_TypeTask>(one, 0x68030005, "", "I2 4"),
      Ask<&I::get_State>(one, 0x68030004, "", "I2 2"),
      Ask<&I::get_Selected>(one, 0x68030003, "", "I2 0"),
      Do<&I::put_Selected>(one, 0x68030003, "-7", "I2 -7"),
      Ask<&I::get_LastExe>(one, 0x68030002, "", "'today'"),
      Ask<&I::get_StatusAct>(one, 0x68030001, "", "'S   '"),
      Ask<&I::get_Source>(one, 0x68030000, "", "'Night'"),
  };
}

Rows UserRows() {
  using C = _Utilisateurs;
  using I = _User;
  const std::string all = "Utilisateurs", one = "Utilisateurs(alice)";
  return {
      Ask<&C::raw_NewUser>(all, 0x60030001, "carl,p,p,1", "carl"),
      Ask<&C::raw_NewUser>(all, 0x60030001, "carl,p,q,1", "800403EA User:NewUser: Please confirm your"),
      Ask<&C::raw_DeleteUser>(all, 0x60030002, "@" + one, "I2 0"),
      Do<&C::raw_Add>(all, 0x60030003, "@" + one + "=Z", "[alice bob Z]"),
      Ask<&C::get_Item>(all, 0, "2", "bob"),
      Ask<&C::get_Count>(all, 0x68030000, "", "I4 2"),
      Do<&C::raw_Remove>(all, 0x60030005, "1", "[bob]"),
      Ask<&C::get_NewEnum>(all, DISPID_NEWENUM, "", "[alice bob]"),
      Ask<&I::get_key>(one, 0x40030000, "", "'alice'"),
      Do<&I::put_key>(one, 0x40030000, "Other", "'Other'"),
      Ask<&I::raw_Check>(one, 0x60030003, "secret", "I2 -1"),
      Ask<&I::raw_Check>(one, 0x60030003, "Secret", "800403E8 User:Update: Incorrect password"),
      Ask<&I::raw_Update>(one, 0x60030004, "0,secret,new,new", "I2 -1"),
      Ask<&I::raw_Update>(one, 0x60030004, "0,missing,missing,missing", "I2 -1"),
      Do<&I::put_Permission>(one, 0x68030001, "0", "I2 0"),
      Do<&I::put_Permission>(one, 0x68030001, "2", "800403EB User:Permission Property Let: You don't have"),
      Ask<&I::get_Permission>(one, 0x68030001, "", "I2 1"),
      Ask<&I::get_Password>(one, 0x68030000, "", "'******'"),
      Ask<&I::get_PasswordCrypted>("Utilisateurs(bob)", 0x68030006, "", "'\\382\\157\\339'"),
      Ask<&I::get_PasswordDecrypted>(one, 0x68030005, "", "'secret'"),
      Do<&I::put_PasswordCrypted>(one, 0x68030006, "x", "'x'"),
  };
}

Rows VariableRows() {
  using C = _Variables;
  using I = _Variable;
  const std::string all = "Domaines(Sales).Variables", one = all + "(Rate)", owner = ",@Domaines(Sales)";
  return {
      Ask<&C::raw_NewVariable>(all, 0x60030001, "New,V,1,'5,'4" + owner, "New"),
      Ask<&C::raw_NewVariable>(all, 0x60030001, ",V,1,'5,'4" + owner,
                               "800405E0 Variables:NewVariable: Enter"),
      Do<&C::raw_Add>(all, 0x60030002, "@" + one + "=Z", "[Invoices Rate Secret Team Z]"),
      Ask<&C::get_Item>(all, 0, "3", "Secret"),
      Ask<&C::get_Count>(all, 0x68030000, "", "I4 4"),
      Do<&C::raw_Remove>(all, 0x60030003, "2", "[Invoices Secret Team]"),
      Ask<&C::raw_DeleteVariable>(all, 0x60030004, "@" + one + owner, "I2 -1"),
      Ask<&C::get_NewEnum>(all, DISPID_NEWENUM, "", "[Invoices Rate Secret Team]"),
      Ask<&I::get_key>(one, 0x40030000, "", "'Rate'"),
      Do<&I::put_key>(one, 0x40030000, "Other", "'Other'"),
      Ask<&I::raw_Duplicate>(one, 0x60030005, "Copy" + owner, "I2 -1"),
      Ask<&I::raw_Duplicate>(one, 0x60030005, "team" + owner, "800405DF Variable:Duplicate: This variable"),
      Ask<&I::raw_Update>(one, 0x60030006, "C,0,text," + owner, "I2 -1"),
      Ask<&I::raw_Update1>(one, 0x60030007, "V,6,3,1,none,Night_s", "I2 -1"),
      Ask<&I::raw_Initialize>(one, 0x60030008, "@Domaines(Sales)", "I2 -1"),
      Ask<&I::raw_Initialize1>(one, 0x60030009, "Domain\\Sales", "I2 -1"),
      Ask<&I::get_VarType>(one, 0x68030003, "", "'V'"),
      Ask<&I::get_Value>(one, 0x68030002, "", "R8 2.5"),
      Ask<&I::get_Init>(one, 0x68030001, "", "R8 1.5"),
      Ask<&I::get_DataType>(one, 0x68030000, "", "I2 6"),
  };
}

Reply CallEarly(const Row& row, IDispatch* object, const std::vector<Variant>& arguments) {
  Reply reply;
  reply.number = row.slot.call(object, arguments, reply.value);
  if (reply.number == S_OK) return reply;
  const ErrorText error = TakeErrorInfo();
  reply.source = error.source;
  reply.description = error.description;
  return reply;
}

Reply CallLate(const Row& row, IDispatch* object, const std::vector<Variant>& arguments) {
  static const std::map<std::string, WORD> kinds{{"get", DISPATCH_PROPERTYGET},
                                                 {"put", DISPATCH_PROPERTYPUT},
                                                 {"putref", DISPATCH_PROPERTYPUTREF},
                                                 {"raw", DISPATCH_METHOD}};
  EXPECT_EQ(IdOf(object, Utf16(row.slot.member)), row.id);
  std::vector<VARIANT> positional(arguments.begin(), arguments.end());
  Named named;
  if (row.slot.kind.starts_with("put")) {
    named.emplace_back(DISPID_PROPERTYPUT, positional.back());
    positional.pop_back();
  }
  Reply reply = Call(object, row.id, kinds.at(row.slot.kind), positional, named);
  EXPECT_EQ(reply.result, reply.number == 0 ? S_OK : DISP_E_EXCEPTION);
  return reply;
}

// What the row's call answers, and the registry afterwards.
std::pair<std::string, std::string> OutcomeOf(const Row& row, decltype(CallEarly) call) {
  ConfigureAfresh();
  const ObjectPtr<IDispatch> object = Reach(row.object);
  const Reply reply = call(row, object.get(), ArgumentsFrom(row.arguments));
  char number[16];
  std::snprintf(number, sizeof number, "%08X ", static_cast<unsigned>(reply.number));
  std::string answer = number + Plain(reply.source) + ": " + Plain(reply.description);
  if (reply.number == 0)
    answer = ShownAs(row.slot.answer, row.slot.kind.starts_with("put")
                                          ? GetProperty(object.get(), Utf16(row.slot.member))
                                      : reply.value.is_empty() ? Variant(object.get())
                                                               : reply.value);
  return {answer, ConfigurationAt("")};
}

TEST_F(EndToEndTest, EveryMemberAnswersAlikeEarlyAndLateBound) {
  std::map<std::string, std::size_t> counts;
  for (const auto& table : {RootRows, DomainRows, ScenarioRows, TaskRows, UserRows, VariableRows}) {
    for (const Row& row : table()) {
      SCOPED_TRACE(row.slot.interface + " " + row.slot.kind + " " + row.slot.member + " " + row.arguments);
      std::size_t& count = counts[row.slot.interface];
      EXPECT_TRUE(row.slot.place == count || row.slot.place + 1 == count) << "at " << row.slot.place;
      count = row.slot.place + 1;
      const auto early = OutcomeOf(row, CallEarly), late = OutcomeOf(row, CallLate);
      EXPECT_EQ(early, late);
      const bool fails = row.expected.starts_with("80");
      EXPECT_EQ(early.first.substr(0, fails ? row.expected.size() : std::string::npos), row.expected);
    }
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
  const auto root = ObjectPtr<_Root>::Query(New(u"moxel.root").get());
  ObjectPtr<_Domaines> domains;
  ObjectPtr<_Domaine> sales;
  Variant name(u"Sales");
  SHORT status = 0;
  ASSERT_EQ(root->get_Domaines(domains.Receive()), S_OK);
  ASSERT_EQ(domains->get_Item(&name, sales.Receive()), S_OK);
  EXPECT_EQ(ConfigurationAt(""), before) << "reading changes nothing";
  ASSERT_EQ(sales->raw_Initialize(1, 1, &status), S_OK);
  EXPECT_EQ(status, VARIANT_TRUE);

  const std::string after = ConfigurationAt("");
  ConfigureAfresh();
  Configure(R"(
      Domain\Sales                  Admin=dword:0
      Domain\Sales\Var\Invoices     Value=dword:0
      Domain\Sales\Var\Rate         Value=real:1.5
      Domain\Sales\Var\Secret       Value=hidden:start
      Scenarios\Invoices            Etat=dword:0  Admin=dword:0
      Scenarios\Night               Etat=dword:0  Admin=dword:0
      Scenarios\Night\Taches\Check  Etat=dword:0
      Scenarios\Night\Taches\Load   Etat=dword:0
      Scenarios\Night\Var\Tries     Value=dword:0)");
  EXPECT_EQ(after, ConfigurationAt(""));
}

TEST_F(EndToEndTest, ObjectsKeepTheLibraryUntilTheLastIsReleased) {
  Variant enumerator = GetProperty(Reach("Domaines").get(), u"NewEnum");
  EXPECT_EQ(CallExport("DllCanUnloadNow"), S_FALSE) << "the enumerator holds its collection";
  enumerator = {};
  EXPECT_EQ(CallExport("DllCanUnloadNow"), S_OK);
}

}  // namespace
}  // namespace moxel::test
