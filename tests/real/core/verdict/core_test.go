// Package verdict asks the real core what it thinks of configurations that the product generates.
package verdict

import (
	"errors"
	"os"
	"os/exec"
	"path/filepath"
	"strings"
	"testing"
)

// judge gives the exit code of `xray run -test` and its verdict.
func judge(t *testing.T, configuration string) (int, string) {
	t.Helper()
	directory := t.TempDir()
	// Paths of Windows in the error log's name; what stands in front of a slash is a directory here.
	for _, path := range []string{"C:", "C:/run", `C:\run`} {
		if err := os.Mkdir(filepath.Join(directory, path), 0o700); err != nil {
			t.Fatal(err)
		}
	}
	file := filepath.Join(directory, "config.json")
	if err := os.WriteFile(file, []byte(configuration), 0o600); err != nil {
		t.Fatal(err)
	}
	command := exec.Command(os.Getenv("TAVRIN_XRAY"), "run", "-test", "-c", file)
	command.Dir = directory
	command.Env = append(os.Environ(), "XRAY_LOCATION_ASSET="+os.Getenv("TAVRIN_GEO_DATA"))
	output, err := command.CombinedOutput()
	var ended *exec.ExitError
	if err != nil && !errors.As(err, &ended) {
		t.Fatal(err)
	}
	return command.ProcessState.ExitCode(), verdict(string(output))
}

// verdict gives the line that says it, or the last one where none does. The core's log has a thread
// of its own, so a line of it can stand behind the verdict.
func verdict(output string) string {
	lines := strings.Split(strings.TrimSpace(output), "\n")
	for _, line := range lines {
		if line == accepted || strings.HasPrefix(line, "Failed to start:") {
			return line
		}
	}
	return lines[len(lines)-1]
}

const (
	accepted = "Configuration OK."
	exitGood = 0
	exitBad  = 23
)
