// Calls of console output, prompts, child processes and the platform.
#include <fcntl.h>
#include <sys/utsname.h>
#include <unistd.h>
#include <zn_common.h>
#include <zn_output.h>
#include <zn_platform.h>
#include <zn_process.h>
#include <zn_shell.h>

#include <stdexcept>
#include <string>

#include "model_output.h"
#include "pools.h"
#include "redirected_descriptor.h"

namespace histories {

void display(Model& model, const std::string& text) {
  if (model.isVerbose) model.out += text.c_str();
}

void errorMessage(Model& model, const std::string& text) {
  if (model.isVerbose && !text.empty()) model.err += "ERROR: " + std::string(text.c_str()) + "\n";
}

namespace {

void setVerbose(Step& step) {
  const bool on = step.choose.flag();
  step.call("setVerbose", on);
  zn_lib::setVerbose(on);
  step.world.model.isVerbose = on;
  step.same(on, zn_lib::isVerbose());
}

void print(Step& step) {
  Model& model = step.world.model;
  const std::string text = anyText(step.choose);
  const std::string upToNul = text.c_str();
  const bool isShown = model.isVerbose && !text.empty();
  switch (step.choose.below(5)) {
    case 0:
      step.call("message", text);
      zn_lib::message(text);
      if (isShown) model.out += upToNul + "\n";
      break;
    case 1:
      step.call("display", text);
      zn_lib::display(text);
      display(model, text);
      break;
    case 2:
      step.call("errorMessage", text);
      zn_lib::errorMessage(text);
      errorMessage(model, text);
      break;
    case 3:
      step.call("debugMessage", text);
      zn_lib::debugMessage(text);
      model.out += "DEBUG: " + upToNul + "\n";
      break;
    default:
      step.call("processTitle", text);
      zn_lib::processTitle(text);
      if (isShown) model.out += "[" + upToNul + "]\n";
  }
}

/// Lets standard input be a pipe with this text, for the lifetime of the object.
class TypedInput {
 public:
  explicit TypedInput(const std::string& text) : redirected_(STDIN_FILENO, "/dev/null", O_RDONLY) {
    int ends[2];
    if (pipe(ends) != 0) throw std::runtime_error("no pipe is available");
    const auto written = write(ends[1], text.data(), text.size());
    if (written != static_cast<ssize_t>(text.size())) throw std::runtime_error("cannot type");
    close(ends[1]);
    dup2(ends[0], STDIN_FILENO);
    close(ends[0]);
  }

 private:
  const RedirectedDescriptor redirected_;
};

void prompt(Step& step) {
  const std::string typed = step.choose.one(
      {"\n"s, "y\n"s, "Yes\n"s, "q\n"s, "Quit\n"s, "n\n"s, " y\n"s, ""s, "Q"s, "yup\nn\n"s});
  const TypedInput input(typed);
  const char first = typed.empty() ? '\0' : typed[0];
  switch (step.choose.below(3)) {
    case 0: {
      const std::string question = anyText(step.choose);
      step.call("yesOrNo", question, typed);
      step.same(first == 'y' || first == 'Y', zn_lib::yesOrNo(question));
      break;
    }
    case 1:
      step.call("more", typed);
      step.same(first != 'q' && first != 'Q', zn_lib::more());
      break;
    default:
      step.call("pauseKey", typed);
      zn_lib::pauseKey();
  }
}

/// Runs a command that changes files, so that the disk shows whether it ran.
void runShell(Step& step) {
  Model& model = step.world.model;
  const std::string target = step.choose.one({"a"s, "b.txt"s, "sub/a"s});
  const std::string rest = step.choose.one({""s, "; exit 3"s, "\0; rm a"s});
  const std::string command = "exec 2>/dev/null; echo told >" + target + rest;
  step.call("execShell", command);
  step.touchesFiles();
  const NodePointer file = model.disk.openForWriting(target, false);
  if (file != nullptr) file->bytes = "told\n";
  step.same(true, zn_lib::execShell(command));
}

std::string withoutDigits(const std::string& text) {
  std::string rest;
  for (const char c : text) {
    if (c < '0' || c > '9') rest += c;
  }
  return rest;
}

void runProgram(Step& step) {
  Model& model = step.world.model;
  const std::string program = step.choose.one({"/bin/mkdir"s, "  /bin/mkdir"s, "missing"s, "~"s});
  const std::string argument = step.choose.one({"made"s, "sub"s, "d.d"s, "a/made"s});
  step.call("childProcess", program, argument, true);
  step.touchesFiles();
  if (program.find("mkdir") != std::string::npos) model.disk.makeDirectory(argument);
  int result;
  {
    // The program says why it fails.
    const RedirectedDescriptor quiet(STDERR_FILENO, "/dev/null", O_WRONLY);
    result = zn_lib::childProcess(program, argument, true);
  }
  step.same(0, result);
  const std::string waiting = "Waiting for child process # to complete...\n";
  step.same(model.isVerbose ? waiting : "", withoutDigits(step.world.takeOutput()));
}

void platform(Step& step) {
  Model& model = step.world.model;
  utsname machine;
  uname(&machine);
  switch (step.choose.below(6)) {
    case 0: {
      const short value = static_cast<short>(step.choose.below(65536));
      step.call("rotate2b", value);
      step.same(value, zn_lib::rotate2b(value));
      break;
    }
    case 1: {
      const unsigned value = step.choose.below(~0U);
      step.call("rotate4b", value);
      step.same(value, zn_lib::rotate4b(value));
      break;
    }
    case 2:
      step.call("IsBigEndian");
      step.same(false, zn_lib::IsBigEndian());
      break;
    case 3:
      step.call("getOSName");
      step.sameHere(machine.sysname, zn_lib::getOSName());
      break;
    case 4:
      step.call("getOSRelease");
      step.sameHere(machine.release, zn_lib::getOSRelease());
      break;
    default:
      step.call("platformInfo");
      model.out += "Platform information\n------------------------------\nName of OS          : ";
      model.out += machine.sysname + "\nRelease level       : "s + machine.release;
      model.out += "\nHardware type       : "s + machine.machine;
      model.out += "\nName of network node: "s + machine.nodename + "\n";
      step.same(true, zn_lib::platformInfo());
      step.printsOfThisMachine = true;
  }
}

void version(Step& step) {
  step.call("zn_udf_1VersionString");
  step.same("@(#)PROGRAM:zn_udf.1  PROJECT:zn_lib-1.1\n", zn_udf_1VersionString);
  step.same(1.1, zn_udf_1VersionNumber);
  step.same("()", zn_lib::BRACKET);
  step.same("{}", zn_lib::CURLY_BRACKET);
  step.same("[]", zn_lib::SQUARE_BRACKET);
  step.same("", zn_lib::BLANK_DATE_STR);
}

}  // namespace

void addOutput(Kinds& kinds) {
  kinds.push_back({"setVerbose isVerbose", setVerbose});
  kinds.push_back({"message display errorMessage debugMessage processTitle", print});
  kinds.push_back({"pauseKey more yesOrNo", prompt, 4});
}

void addPlatform(Kinds& kinds) {
  kinds.push_back({"execShell", runShell, 1});
  kinds.push_back({"childProcess", runProgram, 1});
  kinds.push_back(
      {"platformInfo getOSName getOSRelease IsBigEndian rotate2b rotate4b", platform, 2});
  kinds.push_back({"zn_udf_1VersionString zn_udf_1VersionNumber", version, 1});
}

}  // namespace histories
