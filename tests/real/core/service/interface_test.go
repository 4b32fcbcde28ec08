package service

import (
	"os"
	"os/exec"
	"path/filepath"
	"strings"
	"testing"

	"tavrin.example/real/core/world"
)

// The product's configuration with the core's log at its most talkative, since the failure to bind is no
// warning: the core then goes out unbound.
func TestCoreBindsToTheInterfaceThatTheConfigurationNames(t *testing.T) {
	const failure = "failed to apply socket options > transport/internet: failed to find the interface"
	for _, c := range []struct {
		alias string
		fails bool
	}{{"lo", false}, {"no such interface", true}} {
		t.Run(c.alias, func(t *testing.T) {
			log := logOfOneVisit(t, c.alias)
			if !strings.Contains(log, "connection opened to tcp:"+world.PrivateSite) {
				t.Fatalf("the visit is not in the log: %s", log)
			}
			if fails := strings.Contains(log, "failed to apply socket options"); fails != c.fails {
				t.Errorf("the log: %s", log)
			}
			if c.fails && !strings.Contains(log, failure) {
				t.Errorf("the log: %s", log)
			}
		})
	}
}

// logOfOneVisit runs the core alone, fetches a page of the private site and gives the core's log.
func logOfOneVisit(t *testing.T, alias string) string {
	t.Helper()
	b := newBox(t).withRealXray()
	configuration, err := exec.Command(os.Getenv("TAVRIN_NODE_CONFIGURATION")).Output()
	b.must(err)
	b.write("config.json", strings.NewReplacer(
		`"interface": "lo"`, `"interface": "`+alias+`"`,
		`"loglevel": "warning"`, `"loglevel": "debug"`,
		`C:\\run\\xray-error.log`, `core.log`).Replace(string(configuration)))
	core := b.wine(filepath.Join(b.directory, "runtime/xray/xray.exe"), "run", "-c", b.windowsPath("config.json"))
	b.must(core.Start())
	b.await("the core listens", portIsOpen)
	expectPage(t, "http://"+world.PrivateSite+"/bound", world.Visit{From: world.PrivateSite, At: world.PrivateSite, Host: world.PrivateSite})
	core.Process.Kill()
	core.Wait()
	b.await("the port is free", func() bool { return !portIsOpen() })
	return b.read("core.log")
}
