// Package traffic runs the configuration that the product generates, with the real core, against a real
// REALITY server, and looks at the far end at what came of it.
package traffic

import (
	"os"
	"os/exec"
	"path/filepath"
	"strings"
	"testing"
	"time"

	"tavrin.example/real/core/world"
)

var everything *world.World

func TestMain(m *testing.M) {
	os.Exit(world.Around(m, func(started *world.World) { everything = started }))
}

// connect runs the product's configuration for the node; further fields take the place of the right
// ones. The core ends with the test.
func connect(t *testing.T, fields ...string) *world.Core {
	t.Helper()
	node := everything.Node
	right := []string{"address=" + world.NodeAddress, "port=" + world.NodePort, "uuid=" + node.Uuid,
		"publicKey=" + node.PublicKey, "shortId=" + node.ShortId, "sni=" + world.CoverName}
	configuration, err := exec.Command(os.Getenv("TAVRIN_NODE_CONFIGURATION"), append(right, fields...)...).Output()
	if err != nil {
		t.Fatal(err)
	}
	core, err := world.StartCore(everything.Core, everything.GeoData, t.TempDir(), string(configuration), world.SocksAddress)
	if err != nil {
		t.Fatal(err)
	}
	t.Cleanup(core.Stop)
	return core
}

// errorLog is what the core wrote where the configuration says, once the line of its start is there. A
// path of Windows is one name here.
func errorLog(t *testing.T, core *world.Core) string {
	t.Helper()
	for deadline := time.Now().Add(answerLimit); ; time.Sleep(20 * time.Millisecond) {
		text, err := os.ReadFile(filepath.Join(core.Directory, `C:\run\xray-error.log`))
		if strings.Contains(string(text), " started\n") {
			return string(text)
		}
		if time.Now().After(deadline) {
			t.Fatalf("the error log holds %q, %v", text, err)
		}
	}
}
