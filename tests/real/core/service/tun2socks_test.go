package service

import (
	"os"
	"path/filepath"
	"strings"
	"testing"
)

// productArguments is what the service starts tun2socks with, as the stand-in saw it.
func productArguments(t *testing.T) []string {
	t.Helper()
	b := newBox(t).withXrayStandIn()
	b.start()
	b.expectReply("connect", up)
	for _, line := range strings.Split(b.read("machine/calls.log"), "\n") {
		if strings.HasPrefix(line, "tun2socks-windows-amd64.exe [") {
			_, arguments, _ := strings.Cut(line, `tun2socks-windows-amd64.exe" `)
			return strings.Fields(arguments)
		}
	}
	t.Fatal("tun2socks was not started")
	return nil
}

// startTun2socks runs a built tun2socks to its end.
func startTun2socks(t *testing.T, built string, arguments []string) (int, string) {
	t.Helper()
	b := &box{t: t, directory: t.TempDir()}
	b.copy(filepath.Join(os.Getenv("TAVRIN_REAL"), built), built)
	code := b.end(b.wine(filepath.Join(b.directory, built), arguments...))
	return code, b.read(outputFile)
}

func TestTun2socksTakesTheArgumentsOfTheProduct(t *testing.T) {
	arguments := productArguments(t)
	const wanted = "--loglevel warn --device tavrin --mtu 1400 --tcp-auto-tuning --tcp-sndbuf 4m --tcp-rcvbuf 4m --proxy socks5://127.0.0.1:17593"
	if line := strings.Join(arguments, " "); line != wanted {
		t.Errorf("the product's arguments are %s", line)
	}
	cases := []struct {
		name, program string
		code          int
		text          string
	}{
		// It has understood everything when it looks for Wintun, which is not there.
		{"2.6.0", "tun2socks.exe", 1, "create tun: Error creating interface: Error loading wintun.dll DLL"},
		{"2.5.2", "tun2socks-old.exe", 1, `failed to start: not a valid logrus Level: \"warn\"`},
	}
	for _, c := range cases {
		t.Run(c.name, func(t *testing.T) { expectEnd(t, c.program, arguments, c.code, c.text) })
	}
	for i, argument := range arguments {
		if name, isFlag := strings.CutPrefix(argument, "--"); isFlag {
			changed := append([]string{}, arguments...)
			changed[i] = argument[:len(argument)-1] + "x"
			t.Run("another letter in "+name, func(t *testing.T) {
				expectEnd(t, "tun2socks.exe", changed, 2, "flag provided but not defined: -"+changed[i][2:])
			})
		}
	}
}

func expectEnd(t *testing.T, program string, arguments []string, wantCode int, wantText string) {
	t.Helper()
	if code, output := startTun2socks(t, program, arguments); code != wantCode || !strings.Contains(output, wantText) {
		t.Errorf("exit code %d: %s", code, output)
	}
}

// Without a Wintun that loads, the real one ends at once; the service waits for the adapter all the same.
func TestTun2socksIsStartedByTheService(t *testing.T) {
	b := newBox(t).withRealXray()
	b.copy(filepath.Join(os.Getenv("TAVRIN_REAL"), "tun2socks.exe"), tun2socks)
	b.start()
	b.expectReply("connect", refusal("wintun adapter not created"))
	if b.processes("xray.exe") != 0 || portIsOpen() {
		t.Error("the core runs")
	}
	if strings.Contains(b.read("machine/calls.log"), "CreateUnicastIpAddressEntry") {
		t.Error("an address was set")
	}
}
