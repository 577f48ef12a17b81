// Calls of one member early bound, late bound by id, and late bound by name, beside the look-up of the name.
#include <benchmark/benchmark.h>

#include "moxel/late_bound.h"
#include "users/user.h"

namespace {

constexpr DISPID kPermission = 0x68030001;
constexpr DISPID kCheck = 0x60030003;

// A member without arguments whose result is a number.
void EarlyBoundGet(benchmark::State& state) {
  auto user = moxel::User::Create();
  moxel::_User* face = user.get();
  for (auto _ : state) {
    SHORT permission = 0;
    benchmark::DoNotOptimize(face->get_Permission(&permission));
  }
}
BENCHMARK(EarlyBoundGet);

void LateBoundGet(benchmark::State& state) {
  auto user = moxel::User::Create();
  IDispatch* object = user.get();
  for (auto _ : state) {
    moxel::Variant permission;
    DISPPARAMS none{};
    benchmark::DoNotOptimize(object->Invoke(kPermission, GUID_NULL, 0, DISPATCH_PROPERTYGET, &none,
                                            &permission, nullptr, nullptr));
  }
}
BENCHMARK(LateBoundGet);

// One with an argument and work to do: the comparison of a password.
void EarlyBoundCheck(benchmark::State& state) {
  auto user = moxel::User::Create();
  moxel::_User* face = user.get();
  for (auto _ : state) {
    moxel::Variant password(u"some password");
    SHORT right = 0;
    benchmark::DoNotOptimize(face->raw_Check(&password, &right));
  }
}
BENCHMARK(EarlyBoundCheck);

void LateBoundCheck(benchmark::State& state) {
  auto user = moxel::User::Create();
  IDispatch* object = user.get();
  for (auto _ : state) {
    moxel::Variant password(u"some password"), right;
    DISPPARAMS parameters{&password, nullptr, 1, 0};
    benchmark::DoNotOptimize(
        object->Invoke(kCheck, GUID_NULL, 0, DISPATCH_METHOD, &parameters, &right, nullptr, nullptr));
  }
}
BENCHMARK(LateBoundCheck);

void NameLookUp(benchmark::State& state) {
  auto user = moxel::User::Create();
  IDispatch* object = user.get();
  char16_t name[] = u"Check";
  for (auto _ : state) {
    LPOLESTR names[] = {name};
    DISPID id = 0;
    benchmark::DoNotOptimize(object->GetIDsOfNames(GUID_NULL, names, 1, 0, &id));
  }
}
BENCHMARK(NameLookUp);

}  // namespace
