package traffic

import (
	"errors"
	"io"
	"strings"
	"testing"

	"tavrin.example/real/core/world"
)

func TestALargeBodyArrivesWhole(t *testing.T) {
	connect(t)
	answer, err := world.Get("http://" + world.GoogleName + "/large")
	if err != nil {
		t.Fatal(err)
	}
	defer answer.Body.Close()
	hash, length, err := world.HashOf(answer.Body)
	if err != nil {
		t.Fatal(err)
	}
	want, _, _ := world.HashOf(world.LargeBody())
	if length != world.LargeSize || hash != want {
		t.Errorf("%d bytes with the hash %s came", length, hash)
	}
	if visit, _ := everything.Sites.VisitOf("/large"); visit.From != world.NodeAddress {
		t.Errorf("the site saw %+v", visit)
	}
}

// What a user would see of a node whose settings are wrong: the core starts, so the connect succeeds,
// and every page ends without an answer. The error log has no word about it. With a wrong field of
// REALITY the server hands the client on to the site behind it, whose certificate the core refuses.
func TestAWrongNodeAnswersNothing(t *testing.T) {
	otherKey, _, err := world.NewKeys()
	if err != nil {
		t.Fatal(err)
	}
	cases := []struct {
		name, field string
		greets      string // the server name in the greetings that the site behind the server sees
	}{
		{"wrong uuid", "uuid=7b1f6c0e-3a52-4d6b-9a53-6a1f9d3a2c12", world.CoverName},
		{"wrong short id", "shortId=0123456789abcdee", world.CoverName},
		{"wrong public key", "publicKey=" + otherKey, world.CoverName},
		{"wrong server name", "sni=www.other.example", "www.other.example"},
		{"server down", "port=444", ""},
		{"port 0", "port=0", ""},
	}
	for _, c := range cases {
		t.Run(c.name, func(t *testing.T) {
			core := connect(t, c.field)
			before := everything.Cover.Greetings(c.greets)
			expectEmptyAnswer(t)
			if seen := everything.Cover.Greetings(c.greets) > before; seen != (c.greets != "") {
				t.Errorf("the site behind the server was greeted: %v", seen)
			}
			if text := errorLog(t, core); strings.Count(text, "\n") != 1 || !strings.HasSuffix(text, " started\n") {
				t.Errorf("the error log holds %q", text)
			}
		})
	}
}

// expectEmptyAnswer asks for a page that is there: the connection opens, and ends without a byte.
func expectEmptyAnswer(t *testing.T) {
	t.Helper()
	path := "/" + t.Name()
	_, err := world.Get("http://" + world.GoogleName + path)
	if !errors.Is(err, io.EOF) {
		t.Errorf("the page ends with %v", err)
	}
	if visit, seen := everything.Sites.VisitOf(path); seen {
		t.Errorf("the site saw %+v", visit)
	}
}
