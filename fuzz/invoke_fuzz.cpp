// A hostile client: calls by name and by number on all objects that earlier calls returned, with any
// arguments.
//
// An input is a list of steps, each a letter (see Client::Run) and its choices.
#include <deque>
#include <fstream>
#include <functional>
#include <iterator>
#include <optional>

#include "fuzz/argument.h"
#include "fuzz/pool.h"
#include "fuzz/temp_registry.h"
#include "fuzz/type_calls.h"
#include "moxel/platform/registry_file.h"
#include "moxel/reg_reader.h"
#include "moxel/reg_transfer.h"

namespace moxel::fuzz {
namespace {

// An object that is not the component's, and that may call back when it is asked for an interface.
class Foreign final : public IDispatch {
 public:
  ULONG references = 1;
  std::function<void()> on_query;

  HRESULT QueryInterface(REFIID riid, void** ppvObject) override {
    if (auto once = std::exchange(on_query, nullptr)) once();
    const bool known = riid == IID_IUnknown || riid == IID_IDispatch;
    *ppvObject = known ? static_cast<IDispatch*>(this) : nullptr;
    if (known) AddRef();
    return known ? S_OK : E_NOINTERFACE;
  }
  ULONG AddRef() override { return ++references; }
  ULONG Release() override { return --references; }
  HRESULT GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
  HRESULT GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
  HRESULT Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
    return E_NOTIMPL;
  }
};

class Client {
 public:
  Client(Input& input, const Vocabulary& vocabulary, Foreign& foreign)
      : input_(input), foreign_(foreign), pool_(input), types_(input, vocabulary, pool_) {}

  void Run() {
    for (int steps = 0; steps < 40 && !input_.empty(); ++steps) {
      switch (input_.Step("iiinetd")) {
        case 'i': Invoke(); break;
        case 'n': FindIds(); break;
        case 'e': Enumerate(); break;
        case 't': types_.CallOne(); break;
        default: pool_.Drop();
      }
    }
  }

 private:
  ObjectPtr<IDispatch> TakeObject() {
    if (!input_.Rarely(6)) return pool_.Take<IDispatch>();
    if (input_.Rarely(3)) foreign_.on_query = [this] { pool_.Drop(); };
    return ObjectPtr<IDispatch>(&foreign_);
  }

  DISPID TakeArgumentName() {
    const std::size_t choice = input_.Choose(8);
    return choice == 7   ? input_.Raw<DISPID>()
           : choice == 6 ? DISPID_PROPERTYPUT
                         : static_cast<DISPID>(choice);
  }

  void Invoke() {
    const auto object = pool_.Take<IDispatch>();
    if (!object) return;
    ObjectPtr<ITypeInfo> type;
    object->GetTypeInfo(0, 0, type.Receive());
    const DISPID id = types_.TakeMember(type.get());
    const auto flags = static_cast<WORD>(input_.Choose(16));
    std::deque<Argument> arguments;
    std::vector<VARIANT> values;
    for (std::size_t count = input_.Choose(7); count > 0; --count)
      values.push_back(arguments.emplace_back(input_, TakeObject()).passed());
    std::vector<DISPID> names(input_.Rarely(4) ? input_.Choose(values.size() + 2) : 0);
    for (DISPID& name : names) name = TakeArgumentName();
    DISPPARAMS parameters{values.data(), names.data(), static_cast<UINT>(values.size()),
                          static_cast<UINT>(names.size())};
    if (input_.Rarely(30)) parameters.rgvarg = nullptr;
    const bool through_type = type && input_.Rarely(8);
    Call(parameters, [&](VARIANT* result, EXCEPINFO* exception, UINT* bad) {
      return through_type ? type->Invoke(object.get(), id, flags, &parameters, result, exception, bad)
                          : object->Invoke(id, input_.Rarely(30) ? IID_IDispatch : GUID_NULL, 0, flags,
                                           &parameters, result, exception, bad);
    });
    for (std::size_t i = 0; i < values.size(); ++i)
      Require(arguments[i].IsUntouched(values[i]), "a call changes what is passed by reference only");
  }

  // A call with each of its results wanted or not, and what it must leave there.
  template <class Body>
  void Call(const DISPPARAMS& parameters, Body body) {
    constexpr UINT kUntouched = ~UINT{0};
    Variant result;
    EXCEPINFO exception{};
    UINT bad = kUntouched;
    const bool wants_result = !input_.Rarely(8), wants_exception = !input_.Rarely(8),
               wants_bad = !input_.Rarely(8);
    const HRESULT answer = body(wants_result ? &result : nullptr, wants_exception ? &exception : nullptr,
                                wants_bad ? &bad : nullptr);
    Require(answer != E_UNEXPECTED && answer != E_OUTOFMEMORY, "every failure has a reason");
    Require(SUCCEEDED(answer) || result.is_empty(), "a failing call leaves the result empty");
    Require(bad == kUntouched || (FAILED(answer) && bad < std::max(parameters.cArgs, 1U)),
            "a bad argument is one");
    CheckException(exception, answer == DISP_E_EXCEPTION && wants_exception);
    pool_.Keep(result);
  }

  static void CheckException(EXCEPINFO& exception, bool filled) {
    RequireEqual(FAILED(exception.scode), filled, "number of an exception");
    RequireEqual(exception.bstrSource != nullptr, filled, "source of an exception");
    RequireEqual(exception.bstrDescription != nullptr, filled, "description of an exception");
    Require(exception.scode != E_UNEXPECTED && exception.scode != E_OUTOFMEMORY,
            "every exception has a reason");
    SysFreeString(exception.bstrSource);
    SysFreeString(exception.bstrDescription);
  }

  void FindIds() {
    const auto object = pool_.Take<IDispatch>();
    if (!object) return;
    const auto count = static_cast<UINT>(input_.Choose(5));
    std::vector<std::u16string> names(count + 1);
    std::vector<LPOLESTR> pointers;
    for (std::u16string& name : names) {
      name = types_.TakeName();
      pointers.push_back(input_.Rarely(30) ? nullptr : name.data());
    }
    constexpr DISPID kUntouched = 0x5A5A5A5A;
    std::vector<DISPID> ids(count + 1, kUntouched);
    const HRESULT answer = object->GetIDsOfNames(GUID_NULL, pointers.data(), count, 0, ids.data());
    RequireEqual(ids.back(), kUntouched, "what stands behind the ids");
    ids.pop_back();
    const bool all = std::find(ids.begin(), ids.end(), DISPID_UNKNOWN) == ids.end();
    if (answer != E_NOTIMPL) RequireEqual(answer == S_OK, all, "all names known");
  }

  void Enumerate() {
    const auto enumerator = pool_.Take<IEnumVARIANT>();
    if (!enumerator) return;
    switch (input_.Choose(6)) {
      case 0: enumerator->Skip(input_.Rarely(3) ? ~ULONG{0} : static_cast<ULONG>(input_.Choose(3))); break;
      case 1: enumerator->Reset(); break;
      case 2: {
        ObjectPtr<IEnumVARIANT> clone;
        enumerator->Clone(clone.Receive());
        pool_.Keep(clone);
        break;
      }
      default: Next(*enumerator);
    }
  }

  void Next(IEnumVARIANT& enumerator) {
    const std::size_t count = input_.Choose(6);
    std::vector<Variant> elements(count + 1, Variant::Null());
    ULONG fetched = 77;
    const bool counts = !input_.Rarely(4);
    const HRESULT answer =
        enumerator.Next(static_cast<ULONG>(count), elements.data(), counts ? &fetched : nullptr);
    if (!counts) fetched = static_cast<ULONG>(answer == S_OK ? count : 0);
    Require(fetched <= count && elements[count].is_null(), "elements stay in their room");
    if (counts) RequireEqual(answer, fetched == count ? S_OK : S_FALSE, "answer of a step");
    for (const Variant& element : elements) pool_.Keep(element);
  }

  Input& input_;
  Foreign& foreign_;
  Pool pool_;
  TypeCalls types_;
};

// The component leaves some handles open on purpose, which over many inputs comes to a lot.
void CloseHandles() {
  static HKEY next = 0;
  HKEY last = 0;
  RegOpenKeyExA(HKEY_LOCAL_MACHINE, "", 0, KEY_READ, &last);
  for (next = next == 0 || next > last ? last : next; next <= last; next += 4) RegCloseKey(next);
}

struct Process {
  Process() {
    std::ifstream file(MOXEL_FUZZ_CONFIGURATION, std::ios::binary);
    tool::ImportDocument(tool::ReadRegFile(std::string(std::istreambuf_iterator<char>(file), {})));
    backup = std::string(RegFilePath()) + ".backup";
    RequireEqual(RegFileBackup(backup.c_str()), 0, "RegFileBackup");
    vocabulary.emplace();
  }

  TempRegistry registry;
  std::string backup;
  std::optional<Vocabulary> vocabulary;
};

}  // namespace
}  // namespace moxel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace moxel::fuzz;
  static const Process process;
  Foreign foreign;
  Input input(data, size);
  // What the calls write is not kept; only outside of a transaction do reads answer from memory.
  const bool commits = size % 8 == 0;
  if (!commits) RequireEqual(RegFileBegin(), 0, "RegFileBegin");
  Client(input, *process.vocabulary, foreign).Run();
  if (commits)
    RequireEqual(RegFileRestore(process.backup.c_str()), 0, "RegFileRestore");
  else
    RequireEqual(RegFileRollback(), 0, "RegFileRollback");
  CloseHandles();
  SetErrorInfo(0, nullptr);
  RequireEqual(foreign.references, 1U, "references to a client's object");
  RequireEqual(DllCanUnloadNow(), S_OK, "answer when nothing is held");
  return 0;
}
