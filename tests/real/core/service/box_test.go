// Package service runs the shipping service under Wine with the real helper programs beside it, and looks
// from outside: at its replies, at the processes, at the SOCKS port and at the far end.
package service

import (
	"bytes"
	"encoding/json"
	"errors"
	"os"
	"os/exec"
	"path/filepath"
	"strings"
	"testing"
	"time"

	"tavrin.example/real/core/world"
)

const patience = time.Minute

// Replies, byte for byte.
const (
	up   = `{"ok":true,"running":true,"error":""}`
	down = `{"ok":true,"running":false,"error":""}`
)

func refusal(text string) string { return `{"ok":false,"running":false,"error":"` + text + `"}` }

// box is an installation in a directory of its own, with a simulated machine around it.
type box struct {
	t         *testing.T
	directory string
	service   *exec.Cmd
}

// newBox lays out the installation: the service and the stand-ins, without Xray.
func newBox(t *testing.T) *box {
	t.Helper()
	b := &box{t: t, directory: t.TempDir()}
	windows := os.Getenv("TAVRIN_WINDOWS_BUILD")
	for _, name := range []string{"TavrinService.exe", "tavrinctl.exe", "standins/iphlpapi.dll", "standins/netsh.exe"} {
		b.copy(filepath.Join(windows, name), filepath.Base(name))
	}
	b.copy(filepath.Join(windows, "standins/tun2socks-windows-amd64.exe"), tun2socks)
	b.write("runtime/tun2socks/wintun.dll", "not a library")
	b.write("runtime/session.json", `{"email":"someone@mail.example","expireAt":"2999-12-31"}`)
	b.must(os.Mkdir(filepath.Join(b.directory, "machine"), 0o755))
	b.signIn(nil)
	return b
}

const tun2socks = "runtime/tun2socks/tun2socks-windows-amd64.exe"

// withRealXray and withXrayStandIn finish the layout with the one or the other.
func (b *box) withRealXray() *box {
	b.copy(filepath.Join(os.Getenv("TAVRIN_REAL"), "xray.exe"), "runtime/xray/xray.exe")
	for _, name := range []string{"geoip.dat", "geosite.dat"} {
		b.copy(filepath.Join(os.Getenv("TAVRIN_GEO_DATA"), name), filepath.Join("runtime/xray", name))
	}
	return b
}

func (b *box) withXrayStandIn() *box {
	b.copy(filepath.Join(os.Getenv("TAVRIN_WINDOWS_BUILD"), "standins/xray.exe"), "runtime/xray/xray.exe")
	return b
}

// signIn writes the local account; further fields take the place of the right ones.
func (b *box) signIn(fields map[string]any) {
	b.t.Helper()
	account := map[string]any{"email": "someone@mail.example", "password": "secret", "expireAt": "2999-12-31",
		"nodeName": "Tokyo 01", "address": world.NodeAddress, "port": 443, "uuid": everything.Node.Uuid,
		"sni": world.CoverName, "publicKey": everything.Node.PublicKey, "shortId": everything.Node.ShortId}
	for name, value := range fields {
		account[name] = value
	}
	text, err := json.Marshal(account)
	b.must(err)
	b.write("runtime/account.json", string(text))
}

// namePhysicalInterface gives the simulated machine's physical adapter the name of a real one.
func (b *box) namePhysicalInterface(name string) {
	b.t.Helper()
	b.run(filepath.Join(os.Getenv("TAVRIN_WINDOWS_BUILD"), "standins/show_machine.exe"), "adapters") // writes it down
	text := b.read("machine/machine.json")
	if !strings.Contains(text, `"以太网"`) {
		b.t.Fatalf("the machine is %s", text)
	}
	b.write("machine/machine.json", strings.ReplaceAll(text, `"以太网"`, `"`+name+`"`))
}

// start starts the service in console mode and waits for its pipe. It ends with the test.
func (b *box) start() {
	b.t.Helper()
	b.service = b.wine(filepath.Join(b.directory, "TavrinService.exe"), "--console", "--runtime", b.windowsPath("runtime"))
	b.must(b.service.Start())
	b.t.Cleanup(b.kill)
	b.await("the service answers", func() bool { return b.ask("status") == down })
}

// kill ends the service as a crash would.
func (b *box) kill() {
	b.service.Process.Kill()
	b.service.Wait()
}

// ask is one request by the product's own client.
func (b *box) ask(operation string) string {
	return b.run(filepath.Join(b.directory, "tavrinctl.exe"), "request", `{"op":"`+operation+`"}`)
}

func (b *box) expectReply(operation, want string) {
	b.t.Helper()
	if reply := b.ask(operation); reply != want {
		b.t.Fatalf("%s: %s", operation, reply)
	}
}

// wine prepares a Windows program.
func (b *box) wine(program string, arguments ...string) *exec.Cmd {
	command := exec.Command(os.Getenv("TAVRIN_LAUNCHER"), append([]string{program}, arguments...)...)
	command.Env = append(os.Environ(), "TAVRIN_TEST_MACHINE="+b.windowsPath("machine"))
	command.Dir = b.directory
	return command
}

// run gives the output of a Windows program without its line ends. Through a file: Wine's own processes
// would hold a pipe open.
func (b *box) run(program string, arguments ...string) string {
	b.t.Helper()
	command := b.wine(program, arguments...)
	b.end(command)
	return strings.TrimSpace(strings.ReplaceAll(b.read(outputFile), "\r", ""))
}

const outputFile = "output.txt"

// end runs a program to its end, with both streams into the output file, and gives the exit code.
func (b *box) end(command *exec.Cmd) int {
	b.t.Helper()
	output, err := os.Create(filepath.Join(b.directory, outputFile))
	b.must(err)
	defer output.Close()
	command.Stdout, command.Stderr = output, output
	var ended *exec.ExitError
	if err := command.Run(); err != nil && !errors.As(err, &ended) {
		b.t.Fatal(err)
	}
	return command.ProcessState.ExitCode()
}

// processes counts those of an image below this directory.
func (b *box) processes(image string) int {
	count := 0
	files, _ := filepath.Glob("/proc/[0-9]*/cmdline")
	for _, file := range files {
		line, _ := os.ReadFile(file)
		program, _, _ := bytes.Cut(line, []byte{0})
		if strings.HasPrefix(string(program), b.windowsPath("")) && strings.HasSuffix(string(program), image) {
			count++
		}
	}
	return count
}

func (b *box) await(what string, condition func() bool) {
	b.t.Helper()
	for deadline := time.Now().Add(patience); !condition(); time.Sleep(50 * time.Millisecond) {
		if time.Now().After(deadline) {
			b.t.Fatal("never happened: " + what)
		}
	}
}

func (b *box) windowsPath(name string) string {
	return "Z:" + strings.ReplaceAll(filepath.Join(b.directory, name), "/", `\`)
}

func (b *box) copy(from, to string) {
	b.t.Helper()
	content, err := os.ReadFile(from)
	b.must(err)
	b.write(to, string(content))
}

func (b *box) write(name, text string) {
	b.t.Helper()
	path := filepath.Join(b.directory, name)
	b.must(os.MkdirAll(filepath.Dir(path), 0o755))
	b.must(os.WriteFile(path, []byte(text), 0o755))
}

func (b *box) read(name string) string {
	text, _ := os.ReadFile(filepath.Join(b.directory, name))
	return string(text)
}

func (b *box) must(err error) {
	b.t.Helper()
	if err != nil {
		b.t.Fatal(err)
	}
}
