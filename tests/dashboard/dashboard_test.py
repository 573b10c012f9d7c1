"""Does the dashboard show what the server does, and can everybody use it?

usage: dashboard_test.py KEST, run by scripts/with-sandbox

A headless browser looks at the page as its reader would; the sales come from the host of the command line.
"""
import http.client
import http.server
import json
import os
import subprocess
import sys
import threading
import unittest
import urllib.parse

from browser import ENTER, SPACE, TAB, Browser

KEST = ""
ADMIN = os.environ["KEST_ADMIN"]
GUID = "{0D6F6F0B-5C1D-4B21-9C39-7E0F3B2A9C11}"
MARKUP = '<img src=x onerror="window.broken=1"><script>window.broken=2</script>&lt;b>'

# The parts of the page that these tests look at.
TEXTS = "return [...document.querySelectorAll(arguments[0])].map((one) => one.textContent)"
COUNT = "return document.querySelectorAll(arguments[0]).length === arguments[1]"

# Tells every element with text of its own whose colour is too near to what is behind it (WCAG 2.1, 1.4.3: 4.5 to 1).
PALE = r"""
  const numbers = (colour) => colour.match(/[\d.]+/g).map(Number);
  const light = (colour) => {
    const [r, g, b] = numbers(colour).map((part) => part / 255)
      .map((part) => part <= 0.04045 ? part / 12.92 : ((part + 0.055) / 1.055) ** 2.4);
    return 0.2126 * r + 0.7152 * g + 0.0722 * b;
  };
  const behind = (element) => {
    for (let one = element; one; one = one.parentElement) {
      const colour = getComputedStyle(one).backgroundColor;
      if (numbers(colour)[3] !== 0) return colour;
    }
    return 'rgb(255, 255, 255)';
  };
  const hasText = (element) => [...element.childNodes].some((node) => node.nodeType === 3 && node.data.trim());
  const ratio = (element) => {
    const [a, b] = [light(getComputedStyle(element).color), light(behind(element))];
    return (Math.max(a, b) + 0.05) / (Math.min(a, b) + 0.05);
  };
  const seen = [...document.body.querySelectorAll('*')].filter((one) => hasText(one) && one.checkVisibility());
  if (seen.length < 50) throw new Error('there is hardly any text');
  return seen.filter((one) => ratio(one) < 4.5).map((one) => `${one.tagName}.${one.className}: ${ratio(one)}`);
"""


def kest(*arguments):
    """Runs the host beside the server; answers its exit code."""
    return subprocess.run([KEST, *arguments, "--server", os.environ["KEST_SERVER"], "--port", os.environ["KEST_PORT"],
                           "--key", os.environ["KEST_KEY_FILE"]], check=False, stdout=subprocess.DEVNULL,
                          stderr=subprocess.DEVNULL, timeout=60).returncode


def products():
    return kest("products", "--guid", GUID)


def buy(*lines, card="4111111111111111"):
    return kest("buy", *lines, "--card", card)


def admin(method, path, body=None):
    connection = http.client.HTTPConnection(urllib.parse.urlsplit(ADMIN).netloc, timeout=60)
    text = None if body is None else json.dumps(body)
    connection.request(method, path, text, {"Content-Type": "application/json"})
    reply = connection.getresponse()
    answer = json.loads(reply.read())
    connection.close()
    return answer


class DashboardTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.browser = Browser()
        cls.addClassCleanup(cls.browser.close)

    def setUp(self):
        admin("POST", "/reset", {})
        self.browser.resize(1280, 900)
        self.browser.prefer("light")
        self.browser.open(ADMIN + "/")
        self.wait_for("return document.getElementById('link').textContent === 'live'")

    def wait_for(self, script, *arguments):
        return self.browser.wait_for(script, *arguments)

    def texts(self, selector):
        return self.browser.run(TEXTS, selector)

    def walk_to(self, element):
        """Presses Tab from the top of the page until the element with this id has the focus."""
        self.browser.run("document.activeElement.blur(); window.scrollTo(0, 0)")
        for _ in range(100):
            self.browser.press(TAB)
            if self.browser.run("return document.activeElement.id") == element:
                return
        self.fail(f"Tab does not lead to {element}")

    def shows(self, selector, count):
        self.wait_for(COUNT, selector, count)


class Showing(DashboardTest):
    def test_sale_of_the_host_appears(self):
        self.assertEqual(buy("1:2"), 0)
        self.shows("#sales > tr", 1)
        row = self.texts("#sales td")
        self.assertEqual(row[1:3], ["Pen × 2", "41**********1111"])
        self.assertEqual(row[4], "3.30tax 0.30")
        self.assertEqual(self.texts("#count-sales"), ["1"])

    def test_newest_sale_stands_first(self):
        buy("1:1")
        buy("1:2")
        self.shows("#sales > tr", 2)
        self.assertEqual([text.split("tax")[0] for text in self.texts("#sales td.sum")], ["3.30", "1.65"])

    def test_declined_card_appears_with_the_reason(self):
        self.assertEqual(buy("1:2", card="4000000000000002"), 4)
        self.shows("#refusals > tr", 1)
        row = self.texts("#refusals td")
        self.assertEqual(row[:3], ["1403", "the card was declined", "40**********0002"])
        self.assertEqual(row[4], "3.30")
        self.assertEqual(self.texts("#count-sales") + self.texts("#count-refusals"), ["0", "1"])

    def test_request_opens_by_keyboard_with_its_fields(self):
        buy("1:2")
        self.shows("#requests > li", 2)
        self.browser.run("document.querySelector('#requests summary').focus()")
        self.browser.press(ENTER)
        self.wait_for("return document.querySelector('#requests details').open")
        names = self.texts("#requests li:first-child .fields dt")
        values = self.texts("#requests li:first-child .fields dd")
        fields = dict(zip(names, values))
        self.assertEqual(fields["KEST-Service"], "BillCustomer")
        self.assertEqual(fields["KEST-TotalAmount"], "3.30")
        self.assertEqual(fields["KEST-CCard-Number"], "41**********1111")

    def test_no_whole_card_number_is_on_the_page(self):
        buy("1:2")
        self.shows("#requests > li", 2)
        page = self.browser.run("return document.documentElement.outerHTML")
        self.assertIn("41**********1111", page)
        self.assertNotIn("4111111111111111", page)

    def test_new_request_is_announced(self):
        products()
        self.shows("#requests > li", 2)
        self.assertEqual(self.browser.run("return document.getElementById('news').ariaLive"), "polite")
        before = self.texts("#requests .number")
        products()
        self.wait_for("return document.getElementById('news').textContent.includes('GetProductList answered with 200')")
        self.shows("#requests > li", 4)
        self.assertEqual(self.texts("#requests .number")[2:], before)

    def test_opened_request_stays_open_when_another_arrives(self):
        products()
        self.shows("#requests > li", 2)
        self.browser.run("document.querySelector('#requests details').open = true")
        products()
        self.shows("#requests > li", 4)
        opened = self.browser.run("return [...document.querySelectorAll('#requests details')].map((one) => one.open)")
        self.assertEqual(opened, [False, False, True, False])

    def test_reset_by_another_is_noticed_although_the_count_is_as_before(self):
        products()
        self.shows("#requests > li", 2)
        self.browser.run("document.getElementById('pause').click()")
        self.wait_for("return document.getElementById('link').textContent === 'paused'")
        admin("POST", "/reset", {})
        buy("1")
        self.browser.run("document.getElementById('pause').click()")
        self.wait_for("return document.querySelector('#requests .name')?.textContent === 'BillCustomer'")
        self.assertEqual(self.texts("#requests .name"), ["BillCustomer", "BillCustomer handshake"])

    def test_server_that_is_gone_is_told(self):
        offline = {"offline": True, "latency": 0, "downloadThroughput": -1, "uploadThroughput": -1}
        self.browser.developer("Network.enable")
        self.browser.developer("Network.emulateNetworkConditions", **offline)
        self.wait_for("return document.getElementById('link').textContent === 'not reachable'")
        self.browser.developer("Network.emulateNetworkConditions", **{**offline, "offline": False})
        self.wait_for("return document.getElementById('link').textContent === 'live'")


class Changing(DashboardTest):
    def test_fault_switched_on_by_keyboard_makes_the_next_call_fail(self):
        self.assertEqual(products(), 0)
        self.walk_to("fault-bad-padding")
        self.browser.press(SPACE)
        self.shows("#fault-bad-padding-left:not(:empty)", 1)
        self.assertEqual(admin("GET", "/state")["faults"], [{"kind": "bad-padding", "at": "request", "left": 1}])
        self.assertEqual(products(), 3)
        self.wait_for("return !document.getElementById('fault-bad-padding').checked")
        self.shows(".badge.fault", 1)
        self.assertEqual(products(), 0)

    def test_fault_switched_off_by_keyboard_lets_calls_pass(self):
        admin("POST", "/faults", {"faults": [{"kind": "bad-padding", "times": "always"},
                                             {"kind": "delay", "milliseconds": 0}]})
        self.wait_for("return document.getElementById('fault-bad-padding').checked")
        self.walk_to("fault-bad-padding")
        self.browser.press(SPACE)
        self.wait_for("return document.getElementById('fault-bad-padding-left').textContent === ''")
        self.assertEqual([fault["kind"] for fault in admin("GET", "/state")["faults"]], ["delay"])
        self.assertEqual(products(), 0)

    def test_fault_takes_what_was_chosen_for_it(self):
        self.browser.run("""
          const set = (id, value) => { document.getElementById(id).value = value; };
          set('fault-at', 'handshake'); set('fault-service', 'GetBill'); set('fault-times', 'always');
          set('fault-status-code', '408');
          document.getElementById('fault-status').click();""")
        self.wait_for("return document.getElementById('fault-status-left').textContent === 'always'")
        wanted = {"kind": "status", "at": "handshake", "code": 408, "service": "GetBill", "times": "always"}
        self.assertEqual(admin("GET", "/state")["faults"], [{**wanted, "left": "always"}])

    def test_every_switch_asks_for_a_fault_that_the_server_takes(self):
        kinds = self.browser.run("return [...document.querySelectorAll('[role=switch]')].map((one) => one.id.slice(6))")
        self.browser.run("document.querySelectorAll('[role=switch]').forEach((one) => one.click())")
        self.wait_for("return [...document.querySelectorAll('.left')].every((one) => one.textContent === '1 to come')")
        asked = admin("GET", "/state")["faults"]
        self.assertEqual(sorted(fault["kind"] for fault in asked), sorted(kinds))
        self.assertGreaterEqual(len(kinds), 13)

    def test_fault_that_is_refused_is_told_and_its_switch_stays_off(self):
        self.browser.run("""document.getElementById('fault-status-code').value = '1';
                            document.getElementById('fault-status').click();""")
        self.wait_for("return document.getElementById('failure').textContent.includes('whole number of 100 to 999')")
        self.assertFalse(self.browser.run("return document.getElementById('fault-status').checked"))

    def test_reset_by_keyboard_empties(self):
        buy("1:2")
        buy("1:2", card="4000000000000002")
        admin("POST", "/faults", {"faults": [{"kind": "bad-padding"}]})
        self.shows("#sales > tr", 1)
        self.shows("#requests > li", 4)
        self.wait_for("return document.getElementById('fault-bad-padding').checked")
        self.walk_to("reset")
        self.browser.press(ENTER)
        self.wait_for("return document.getElementById('confirm').open")
        self.browser.press(TAB, ENTER)
        for selector in ("#sales > tr", "#refusals > tr", "#requests > li", "[role=switch]:checked"):
            self.shows(selector, 0)
        self.assertEqual(self.texts("#count-sales") + self.texts("#count-requests"), ["0", "0"])
        self.assertEqual(admin("GET", "/sales"), {"sales": [], "refusals": []})

    def test_reset_that_is_not_confirmed_keeps_everything(self):
        buy("1:2")
        self.shows("#sales > tr", 1)
        self.walk_to("reset")
        self.browser.press(ENTER)
        self.wait_for("return document.getElementById('confirm').open")
        self.browser.press(ENTER)
        self.wait_for("return !document.getElementById('confirm').open")
        self.assertEqual(self.browser.run("return document.activeElement.id"), "reset")
        self.assertEqual(admin("GET", "/state")["sales"], 1)

    def test_reset_gives_the_focus_back(self):
        self.walk_to("reset")
        self.browser.press(ENTER, TAB, ENTER)
        self.wait_for("return document.activeElement.id === 'reset'")


class Keeping(DashboardTest):
    def test_markup_stays_text(self):
        self.assertEqual(buy("2"), 0)
        products()
        self.shows("#sales > tr", 1)
        self.shows("#requests > li", 4)
        self.assertEqual(self.texts("#sales .products li"), [MARKUP + " × 1"])
        self.assertTrue(any(MARKUP in text for text in self.texts("#requests .fields dd")))
        self.assertIn("Merchant <b>bold</b> & sons", self.texts("#requests .fields dd"))
        made = self.browser.run("return document.querySelectorAll('main img, main script, .fields dd > *').length")
        self.assertEqual(made, 0)
        self.assertIsNone(self.browser.run("return window.broken"))

    def test_script_that_got_into_the_page_does_not_run(self):
        self.browser.run("""
          const script = document.createElement('script');
          try { script.append('window.broken = 3'); document.body.append(script); } catch { /* refused as well */ }
          try { document.body.setAttribute('onclick', 'window.broken = 4'); } catch { /* too */ }
          document.body.click();""")
        self.assertIsNone(self.browser.run("return window.broken"))

    def test_nothing_is_fetched_from_elsewhere(self):
        buy("2")
        self.shows("#requests > li", 2)
        names = self.browser.run("return performance.getEntriesByType('resource').map((one) => one.name)")
        self.assertGreater(len(names), 5)
        self.assertEqual([name for name in names if not name.startswith(ADMIN + "/")], [])

    def test_page_of_another_site_changes_nothing(self):
        buy("1:2")
        shop = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Foreign)
        threading.Thread(target=shop.serve_forever, daemon=True).start()
        self.addCleanup(shop.server_close)
        self.addCleanup(shop.shutdown)
        self.browser.open(f"http://127.0.0.1:{shop.server_port}/")
        sent = self.browser.run("""
          const [admin] = arguments;
          const json = { 'Content-Type': 'application/json' };
          const ways = [
            [admin + '/reset', { method: 'POST', mode: 'no-cors', body: '{}' }],
            [admin + '/reset', { method: 'POST', mode: 'cors', headers: json, body: '{}' }],
            [admin + '/faults', { method: 'POST', mode: 'no-cors', body: '{"faults": [{"kind": "bad-padding"}]}' }],
            [admin + '/sales', { mode: 'cors' }],
          ];
          return Promise.all(ways.map(([url, options]) => fetch(url, options)
            .then((reply) => reply.type, () => 'failed')));
        """, ADMIN)
        self.assertEqual(sent[1], "failed")
        self.assertEqual(sent[3], "failed")
        state = admin("GET", "/state")
        self.assertEqual((state["sales"], state["faults"]), (1, []))


class Foreign(http.server.BaseHTTPRequestHandler):
    """A site of another origin."""

    def do_GET(self):
        self.send_response(200)
        self.end_headers()
        self.wfile.write(b"<!doctype html><title>elsewhere</title>")

    def log_message(self, *_):
        pass


class Reading(DashboardTest):
    def fill(self):
        admin("POST", "/faults", {"faults": [{"kind": "wrong-digest"}]})
        products()
        buy("3:2", "2")
        buy("1", card="4000000000000069")
        admin("POST", "/faults", {"faults": [{"kind": "headers", "lines": ["X: " + "y" * 300], "times": "always"}]})
        self.shows("#requests > li", 6)
        self.shows("#sales > tr", 1)
        self.shows("#refusals > tr", 1)
        self.browser.run("document.querySelectorAll('#requests details').forEach((one) => { one.open = true; })")

    def test_phone_needs_no_scrolling_to_the_side(self):
        self.fill()
        for width in (360, 390, 768):
            self.browser.resize(width, 740, mobile=True)
            sizes = self.browser.run("""
              const root = document.documentElement;
              const seen = [...document.querySelectorAll('body *')].filter((one) => one.checkVisibility() &&
                !one.closest('.skip, .unseen, thead, input, select'));
              const wide = seen.filter((one) => one.getBoundingClientRect().right > root.clientWidth + 0.5 ||
                (one.clientWidth > 0 && one.scrollWidth > one.clientWidth + 1));  // which would be cut off
              const names = wide.map((one) => `${one.tagName} ${one.id} ${one.className}`);
              return [root.clientWidth, root.scrollWidth, names];""")
            self.assertEqual(sizes, [width, width, []])

    def test_text_stands_out_in_the_light_and_in_the_dark(self):
        self.fill()
        for scheme in ("light", "dark"):
            self.browser.prefer(scheme)
            self.assertEqual(self.browser.run(PALE), [], scheme)
        self.assertLess(sum(map(int, self.browser.run(
            "return getComputedStyle(document.body).backgroundColor.match(/\\d+/g).slice(0, 3)"))), 3 * 64)

    def test_keyboard_reaches_every_control_and_shows_where_it_is(self):
        self.fill()
        wanted = self.browser.run("""
          const controls = [...document.querySelectorAll('a, button, input, select, summary')];
          const usable = controls.filter((one) => one.checkVisibility() && !one.disabled);
          usable.forEach((one, index) => { one.dataset.index = index; });
          return usable.length;""")
        self.assertGreater(wanted, 30)
        self.browser.run("document.activeElement.blur(); window.scrollTo(0, 0)")
        reached = set()
        for _ in range(wanted + 20):
            self.browser.press(TAB)
            index, outline = self.browser.run("""
              const style = getComputedStyle(document.activeElement);
              return [document.activeElement.dataset.index, `${style.outlineStyle} ${style.outlineWidth}`];""")
            if index is not None:
                reached.add(index)
                self.assertEqual(outline, "solid 3px", f"control {index}")
        self.assertEqual(len(reached), wanted)

    def test_every_control_has_a_name(self):
        self.fill()
        self.browser.developer("Accessibility.enable")
        nodes = self.browser.developer("Accessibility.getFullAXTree")["nodes"]
        roles = {"button", "switch", "checkbox", "combobox", "textbox", "spinbutton", "link", "DisclosureTriangle"}
        controls = [node for node in nodes if not node["ignored"] and node["role"]["value"] in roles]
        self.assertGreater(len(controls), 30)
        self.assertEqual([node["role"]["value"] for node in controls if not node["name"]["value"].strip()], [])


if __name__ == "__main__":
    KEST = sys.argv[1]
    unittest.main(argv=[sys.argv[0], *sys.argv[2:]])
