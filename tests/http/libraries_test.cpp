// How the three libraries are loaded, initialised and let go.
#include "tests/http/library_folder.h"
#include "tests/support/counter.h"
#include "tests/support/words.h"
#include "zelto/platform/process.h"

#include <algorithm>
#include <fstream>
#include <memory>
#include <thread>

using namespace Zelto::Testing;

namespace {

class HttpLibraries : public StandInSession {
 protected:
  std::unique_ptr<Session> Open() { return std::make_unique<Session>(Directory()); }

  Thrown OpenFails() {
    return Catch([&] { Open(); });
  }
  Thrown NotLoaded(const std::string& name, std::uint32_t code = 126) {
    return {"Can't load library: " + (folder.Path() / name).string(), code};
  }

  static auto CountOf(const std::vector<std::string>& notes, const std::string& prefix) {
    return std::count_if(notes.begin(), notes.end(), [&](const std::string& n) { return n.starts_with(prefix); });
  }
};

TEST_F(HttpLibraries, AreLoadedAndInitialisedInOrderAndLetGoInReverse) {
  Open();
  EXPECT_EQ(TakeCalls(),
            "load curl; load crypto; load ssl; curl_global_init 3; CRYPTO_malloc 3 Source\\CurlWrapper.cpp line; "
            "CRYPTO_set_locking_callback; CRYPTO_THREADID_set_callback; curl_easy_init; "
            "curl_slist_free_all null; curl_easy_cleanup; CRYPTO_THREADID_set_callback null; "
            "CRYPTO_set_locking_callback null; CRYPTO_free; curl_global_cleanup; unload ssl; unload crypto; "
            "unload curl; ");
}

TEST_F(HttpLibraries, NameTheFirstFileThatIsMissing) {
  const std::string& curl = names.curl[0];
  const auto& [crypto, ssl] = names.openssl[0];
  for (const std::string& missing : {ssl, crypto, curl}) {  // the order of loading, from its end
    Remove(missing);
    EXPECT_EQ(OpenFails(), NotLoaded(missing));
  }
  Put("curl", curl);
  Put("crypto", crypto);
  WriteFile(folder / std::wstring(ssl.begin(), ssl.end()), "no library");
  const Thrown broken = OpenFails();
  EXPECT_EQ(broken.text, NotLoaded(ssl).text);
  EXPECT_NE(broken.code, 126U);
  EXPECT_EQ(Catch([&] { Session(Directory() + std::wstring(1, L'\0')); }).code, 123U);
  const auto notes = TakeNotes();
  EXPECT_EQ(CountOf(notes, "load "), CountOf(notes, "unload "));
  EXPECT_EQ(CountOf(notes, "curl_"), 0);
}

TEST_F(HttpLibraries, NameTheFirstFunctionThatIsMissing) {
  const auto expect = [&](const std::string& part, const std::string& file, const char* in_order) {
    for (const std::string& function : Words(in_order)) {
      Put(part + "_without_" + function, file);  // nor those behind it
      EXPECT_EQ(OpenFails(), (Thrown{"Can't load function: " + function, 127}));
    }
    Put(part, file);
  };
  expect("curl", names.curl[0],
         "curl_global_init curl_easy_init curl_slist_free_all curl_easy_cleanup curl_global_cleanup curl_easy_setopt "
         "curl_slist_append curl_easy_getinfo curl_easy_perform curl_easy_strerror");
  expect("crypto", names.openssl[0].first,
         "CRYPTO_malloc CRYPTO_num_locks CRYPTO_set_locking_callback CRYPTO_THREADID_set_callback CRYPTO_free "
         "CRYPTO_THREADID_set_numeric");
  expect("ssl", names.openssl[0].second,
         "SSL_CTX_get_cert_store PEM_read_bio_X509 X509_STORE_add_cert X509_free BIO_new_mem_buf BIO_free");
  EXPECT_EQ(OpenFails(), Thrown());
}

TEST_F(HttpLibraries, FallBackToTheirSuccessors) {
  const auto& lines = names.openssl;
  Remove(lines[0].first);
  Remove(lines[0].second);
  for (const std::string& curl : names.curl) {
    Remove(names.curl[0]);
    Put("curl", curl);
    EXPECT_EQ(OpenFails(), NotLoaded(lines[0].first));
    for (std::size_t i = 0; i < lines.size(); ++i) {
      const std::string& other_ssl = lines[(i + 1) % lines.size()].second;
      Put("crypto_new", lines[i].first);
      Put("ssl", other_ssl);
      EXPECT_EQ(OpenFails(), NotLoaded(lines[i].second)) << "one line's file beside another's";
      Put("ssl", lines[i].second);
      EXPECT_EQ(OpenFails(), Thrown());
      for (const std::string& file : {lines[i].first, lines[i].second, other_ssl}) {
        Remove(file);
      }
    }
    Remove(curl);
  }
  EXPECT_EQ(OpenFails(), NotLoaded(names.curl[0]));
  EXPECT_EQ(CountOf(TakeNotes(), "CRYPTO_"), 0) << "the new line needs no locks";
}

TEST_F(HttpLibraries, OfARelativeDirectoryAreThoseBelowTheCurrentFolderAlone) {
  // Beside the program, where a loader may look first, stands something of the same name.
  const std::filesystem::path name = folder.Path().filename();
  const std::filesystem::path decoy = std::filesystem::path(STAND_IN_FOLDER).parent_path() / name;
  std::filesystem::create_directory(decoy);
  std::ofstream(decoy / names.curl[0]) << "no library";
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(folder.Path().parent_path());
  const Thrown thrown = Catch([&] { Session(name.wstring()); });
  std::filesystem::current_path(before);
  std::filesystem::remove_all(decoy);
  EXPECT_EQ(thrown, Thrown());
}

TEST_F(HttpLibraries, AreFoundWithASeparatorAtTheEndAndBesideThisLibraryWithoutADirectory) {
  EXPECT_EQ(Catch([&] { Session(Directory() + L"/"); }), Thrown());
  Remove(names.curl[0]);
  EXPECT_EQ(Catch([&] { Session(Directory() + L"/"); }).text,
            "Can't load library: " + folder.Path().string() + "/" + names.curl[0]);
  const Thrown thrown = Catch([&] { Session(L""); });
  const std::filesystem::path path(thrown.text.substr(thrown.text.find(": ") + 2));
  EXPECT_EQ(path.filename(), names.curl[0]);
  EXPECT_TRUE(path.is_absolute()) << thrown;
  EXPECT_TRUE(std::filesystem::exists(path.parent_path() / "stand_in")) << thrown;
}

TEST_F(HttpLibraries, HaveAProcessWideStateFromTheFirstSessionToTheLast) {
  for (int round = 0; round < 2; ++round) {
    auto first = Open();
    auto second = Open();
    first.reset();
    EXPECT_EQ(CountOf(TakeNotes(), "curl_global_cleanup"), 0);
    EXPECT_NE(GetLockingCallbacks().lock, nullptr);
    auto third = Open();
    second.reset();
    EXPECT_EQ(CountOf(TakeNotes(), "curl_global_"), 0);
    third.reset();
    EXPECT_EQ(CountOf(TakeNotes(), "curl_global_cleanup"), 1);
    EXPECT_EQ(GetLockingCallbacks().lock, nullptr);
  }
}

TEST_F(HttpLibraries, OfTwoFoldersHaveStatesOfTheirOwnButNotTwoSetsOfLocks) {
  LibraryFolder other;
  auto first = Open();
  EXPECT_EQ(Catch([&] { Session(other.Directory()); }), (Thrown{"Could not initialize the curl library", 50}));
  other.Put("crypto_new", names.openssl[0].first);
  auto second = std::make_unique<Session>(other.Directory());
  TakeNotes();
  first.reset();
  EXPECT_EQ(CountOf(TakeNotes(), "curl_global_cleanup"), 1);
  second.reset();
  EXPECT_EQ(CountOf(TakeNotes(), "curl_global_cleanup"), 1);
}

TEST_F(HttpLibraries, AreLetGoWhenAConstructorFailsHalfWay) {
  const auto expect = [&](std::uint32_t code, int cleanups) {
    EXPECT_EQ(OpenFails(), (Thrown{"Could not initialize the curl library", code}));
    const auto notes = TakeNotes();
    EXPECT_EQ(CountOf(notes, "curl_global_cleanup"), cleanups);
    EXPECT_EQ(CountOf(notes, "unload "), 3);
    GetAnswers() = {};
  };
  GetAnswers().global_init = 27;
  expect(27, 0);
  GetAnswers().crypto_malloc = false;
  expect(8, 1);
  GetAnswers().easy_init = false;
  expect(8, 1);
  EXPECT_EQ(OpenFails(), Thrown());
}

TEST_F(HttpLibraries, GetLocksThatExcludeAndIdsThatDiffer) {
  const auto session = Open();
  const auto lock = GetLockingCallbacks().lock.load();
  const auto thread_id = GetLockingCallbacks().thread_id.load();
  Counter entered;
  unsigned long ids[2] = {};
  lock(1, kLocks - 1, "", 0);  // held by this thread, twice
  lock(1, kLocks - 1, "", 0);
  std::thread other([&] {
    thread_id(&ids[1]);
    lock(1, 0, "", 0);  // another lock is free
    lock(2, 0, "", 0);
    lock(1 | 4, kLocks - 1, "", 0);
    entered.Add();
    lock(2 | 4, kLocks - 1, "", 0);
  });
  lock(2, kLocks - 1, "", 0);
  EXPECT_FALSE(entered.WaitFor(1, std::chrono::milliseconds(30)));
  lock(2, kLocks - 1, "", 0);
  other.join();
  thread_id(&ids[0]);
  EXPECT_EQ(ids[0], Zelto::Platform::CurrentThreadId());
  EXPECT_NE(ids[0], ids[1]);
}

}  // namespace
