package service

import (
	"net"
	"path/filepath"
	"strings"
	"testing"

	"tavrin.example/real/core/world"
)

const coreRefused = "连接核心无法启动，请换一条线路或重新登录后再试。"

func portIsOpen() bool {
	connection, err := net.Dial("tcp", world.SocksAddress)
	if err == nil {
		connection.Close()
	}
	return err == nil
}

// The whole of a connect with the real core: the stand-in for tun2socks takes the tunnel's place.
func TestCoreCarriesAPageWhileTheTunnelIsUp(t *testing.T) {
	b := newBox(t).withRealXray()
	b.namePhysicalInterface("lo")
	b.start()
	b.expectReply("connect", up)
	expectPage(t, "http://"+world.GoogleName+"/under-wine", world.Visit{From: world.NodeAddress, At: world.PublicSite, Host: world.GoogleName})
	expectPage(t, "http://"+world.CnName+"/direct-under-wine", world.Visit{From: world.CnSite, At: world.CnSite, Host: world.CnName})
	if log := b.read("runtime/xray-error.log"); !strings.Contains(log, "started") {
		t.Errorf("the core's log holds %q", log)
	}
	if count := b.processes("xray.exe"); count != 1 {
		t.Errorf("%d cores run", count)
	}
	b.expectReply("status", up)
	expectDoctor(b, "Xray accepts the last one")
	b.expectReply("disconnect", down)
	if b.processes("xray.exe") != 0 || portIsOpen() {
		t.Error("the core outlives the tunnel")
	}
}

func TestCoreEndsWithAServiceThatCrashes(t *testing.T) {
	b := newBox(t).withRealXray()
	b.start()
	b.expectReply("connect", up)
	if b.processes("xray.exe") != 1 || !portIsOpen() {
		t.Fatal("the core does not run")
	}
	b.kill()
	b.await("the core ends", func() bool { return b.processes("xray.exe") == 0 && !portIsOpen() })
}

func TestCoreThatRefusesItsNodeIsReported(t *testing.T) {
	b := newBox(t).withRealXray()
	b.signIn(map[string]any{"publicKey": "KEY"})
	b.start()
	b.expectReply("connect", refusal(coreRefused))
	if b.processes("xray.exe") != 0 || portIsOpen() {
		t.Error("the core runs")
	}
	if strings.Contains(b.read("runtime/xray-error.log"), "started") {
		t.Error("the core started")
	}
	expectDoctor(b, "Xray refuses the last one: Failed to start: main: failed to load config files")
	expectDoctor(b, `infra/conf: invalid "password": `)
}

// expectDoctor looks for a text in what the client's doctor finds.
func expectDoctor(b *box, text string) {
	b.t.Helper()
	findings := b.run(filepath.Join(b.directory, "tavrinctl.exe"), "doctor", "--runtime", b.windowsPath("runtime"))
	if !strings.Contains(strings.Join(strings.Fields(findings), " "), text) {
		b.t.Errorf("the doctor does not say %s:\n%s", text, findings)
	}
}

// expectPage fetches a page through the core, and looks at who asked the site for it.
func expectPage(t *testing.T, url string, want world.Visit) {
	t.Helper()
	if err := world.GetPage(url); err != nil {
		t.Fatal(err)
	}
	path := strings.TrimPrefix(url, "http://"+want.Host)
	if visit, _ := everything.Sites.VisitOf(path); visit != want {
		t.Errorf("the site saw %+v", visit)
	}
}
