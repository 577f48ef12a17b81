#include "moxel/user_commands.h"

#include <memory>
#include <string>

#include "moxel/descriptions.h"
#include "moxel/password_input.h"
#include "moxel/verbs.h"

namespace moxel::tool {
namespace {

constexpr const char* kPasswordFooter =
    "Passwords are asked for without echo, or read from standard input, one a line.\n\nExample:\n  ";

struct Options {
  std::string name;
  std::int16_t permission = 0;
  bool permission_given = false;
  bool password = false;
  bool json = false;
};

void AddName(CLI::App* verb, Options& options) {
  verb->add_option("USER", options.name, "Name of the user")->required();
}

CLI::Option* AddPermission(CLI::App* verb, Options& options) {
  return verb->add_option("--permission", options.permission, "Permission level, at most 1")->type_name("N");
}

void List(const Options& options, const Console& console) {
  const ObjectModel model;
  Json users = Json::array();
  for (const Object& user : ObjectsOf(model.Users())) users.push_back(DescribeUser(user));
  if (options.json) return PrintJson(users, console);
  PrintTable({{"NAME", "name"}, {"PERMISSION", "permission"}, {"PASSWORD", "password"}}, users, console);
}

void Create(const Options& options, const Console& console) {
  const Variant name = StoredArgument(options.name);
  PasswordInput input(console);
  const Variant password = input.Ask("Password");
  const Variant confirmation = input.AskAgain("Password again", password);
  const ObjectModel model;
  Change([&] {
    CallMethod(model.Users().get(), u"NewUser", {name, password, confirmation, options.permission});
  });
}

void Update(const Options& options, const Console& console) {
  if (!options.permission_given && !options.password)
    throw ToolError::Usage("nothing to change: give --permission or --password");
  const ObjectModel model;
  const Object user = model.User(options.name);
  std::vector<Variant> arguments = {options.permission_given ? Variant(options.permission)
                                                             : GetProperty(user.get(), u"Permission")};
  if (options.password) {
    PasswordInput input(console);
    arguments.push_back(input.Ask("Present password"));
    arguments.push_back(input.Ask("New password"));
    arguments.push_back(input.AskAgain("New password again", arguments.back()));
  }
  Change([&] { CallMethod(user.get(), u"Update", arguments); });
}

// A wrong password is the component's numbered error.
void Check(const Options& options, const Console& console) {
  const ObjectModel model;
  const Object user = model.User(options.name);
  CallMethod(user.get(), u"Check", {PasswordInput(console).Ask("Password")});
}

// The component answers "false" whatever it deleted, and keeps the user in the collection.
void Delete(const Options& options) {
  ObjectModel model;
  const Object user = model.User(options.name);
  Change([&] {
    CallMethod(model.Users().get(), u"DeleteUser", {user.get()});
    model.Reload();
    if (Find(model.Users(), options.name))
      throw ToolError(Named("user", options.name) + ": cannot be deleted");
  });
}

void AddList(CLI::App& group, Console& console) {
  CLI::App* verb = group.add_subcommand("list", "List all users, their passwords masked");
  auto options = std::make_shared<Options>();
  verb->add_flag("--json", options->json, "Print the list as JSON");
  verb->footer("Example:\n  moxel user list");
  verb->callback([options, &console] { List(*options, console); });
}

void AddCreate(CLI::App& group, Console& console) {
  CLI::App* verb = group.add_subcommand("create", "Create a user; asks for the password twice");
  auto options = std::make_shared<Options>();
  verb->add_option("NAME", options->name, "Name of the new user")->required();
  AddPermission(verb, *options)->required();
  verb->footer(kPasswordFooter + std::string("moxel user create carol --permission 1"));
  verb->callback([options, &console] { Create(*options, console); });
}

void AddUpdate(CLI::App& group, Console& console) {
  CLI::App* verb = group.add_subcommand("update", "Change the permission of a user, the password, or both");
  auto options = std::make_shared<Options>();
  AddName(verb, *options);
  CLI::Option* permission = AddPermission(verb, *options);
  verb->add_flag("--password", options->password, "Ask for the present password and, twice, for the new one");
  verb->footer(kPasswordFooter + std::string("moxel user update alice --permission 0 --password"));
  verb->callback([options, permission, &console] {
    options->permission_given = permission->count() > 0;
    Update(*options, console);
  });
}

void AddCheck(CLI::App& group, Console& console) {
  CLI::App* verb =
      group.add_subcommand("check", "Ask for the password of a user; the exit code is 0 when it is right");
  auto options = std::make_shared<Options>();
  AddName(verb, *options);
  verb->footer(kPasswordFooter + std::string("moxel user check alice"));
  verb->callback([options, &console] { Check(*options, console); });
}

void AddDelete(CLI::App& group) {
  CLI::App* verb = group.add_subcommand("delete", "Delete a user, also from the users of scenarios");
  auto options = std::make_shared<Options>();
  AddName(verb, *options);
  verb->footer("Example:\n  moxel user delete bob");
  verb->callback([options] { Delete(*options); });
}

}  // namespace

void AddUserCommands(CLI::App& app, Console& console) {
  CLI::App* group = app.add_subcommand("user", "List, create, change, check and delete users");
  RequireVerb(*group);
  group->footer("Example:\n  moxel user create carol --permission 1");
  AddList(*group, console);
  AddCreate(*group, console);
  AddUpdate(*group, console);
  AddCheck(*group, console);
  AddDelete(*group);
}

}  // namespace moxel::tool
