// What the page is fed: the table of servers as JSON, and of each server what is shown when it is
// opened, compressed where the program that wrote the page could.

const byId = (id) => document.getElementById(id);
const fleet = JSON.parse(byId("fleet").textContent);

async function detailsOf(index) {
    const element = byId("data-" + index);
    if (element.type === "application/json") {
        return JSON.parse(element.textContent);
    }
    const packed = Uint8Array.from(atob(element.textContent), (c) => c.charCodeAt(0));
    const stream = new Blob([packed]).stream().pipeThrough(new DecompressionStream("deflate"));
    return new Response(stream).json();
}
