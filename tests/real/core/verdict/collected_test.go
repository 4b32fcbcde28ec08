package verdict

import (
	"bytes"
	"os"
	"path/filepath"
	"regexp"
	"testing"
)

// Each of the two worlds has far more; fewer would mean that nothing was collected.
const (
	leastAccepted = 10
	leastRefused  = 10
)

var sandboxPath = regexp.MustCompile(`"error": "[^"]*tavrin e2e [0-9-]+`)

// Every configuration that the product generated in the unit, fault and end-to-end tests is accepted
// when nothing is wrong with its node, and refused otherwise. The ones that differ by the directory of
// their test alone are asked for once.
func TestCollectedConfigurations(t *testing.T) {
	files, _ := filepath.Glob(filepath.Join(os.Getenv("TAVRIN_COLLECTED"), "*.json"))
	seen := map[string]bool{}
	count := map[bool]int{}
	for _, file := range files {
		text, err := os.ReadFile(file)
		if err != nil {
			t.Fatal(err)
		}
		text = sandboxPath.ReplaceAll(text, []byte(`"error": "C:\\run`))
		if seen[string(text)] || !bytes.Contains(text, []byte(`"outbounds"`)) {
			continue
		}
		seen[string(text)] = true
		damage := damageOf(text)
		count[damage == ""]++
		t.Run(filepath.Base(file), func(t *testing.T) { expectVerdict(t, string(text), damage) })
	}
	t.Logf("%d files, %d of them different: %d to be accepted, %d to be refused", len(files), len(seen), count[true], count[false])
	if count[true] < leastAccepted || count[false] < leastRefused {
		t.Error("too few")
	}
}

func expectVerdict(t *testing.T, text, damage string) {
	t.Helper()
	code, line := judge(t, text)
	if damage == "" && (code != exitGood || line != accepted) {
		t.Errorf("exit code %d: %s", code, line)
	}
	if damage != "" && code != exitBad {
		t.Errorf("exit code %d in spite of %s: %s", code, damage, line)
	}
}
