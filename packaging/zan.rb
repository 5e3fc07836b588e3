# For Homebrew, from a checkout: brew install --formula --HEAD packaging/zan.rb, with HOMEBREW_ZAN_SOURCE naming the
# checkout. Checked by its steps and its test, typed by hand on Debian with a prefix; brew was not at hand.
class Zan < Formula
  desc "Line and screen editor for a character terminal"
  homepage "https://example.org/zan"
  head ENV.fetch("HOMEBREW_ZAN_SOURCE", File.expand_path("..", __dir__)), using: :git

  depends_on "cmake" => :build
  depends_on "ninja" => :build
  depends_on "ncurses"

  def install
    system "cmake", "-S", ".", "-B", "build", "-G", "Ninja", "-DZAN_TESTS=OFF", "-DZAN_BENCH=OFF", *std_cmake_args
    system "cmake", "--build", "build"
    system "cmake", "--install", "build"
  end

  test do
    (testpath/"notes.txt").write "one\ntwo\n"
    assert_match "2 two", pipe_output("env TERM=xterm #{bin}/zan notes.txt", "TYPE WHOLE\nQUIT\n")
  end
end
