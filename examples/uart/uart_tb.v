// A thermometer reports its readings, one a line, over the link. The far side reads them with
// pauses, long enough at times to fill the buffer. Everything is derived from fixed seeds.
`timescale 1ns / 1ns
module uart_tb;
  reg clk_a = 0;
  reg clk_b = 0;
  reg rst = 1;

  always #5 clk_a = !clk_a;
  always #7 clk_b = !clk_b;

  wire [7:0] a_data;
  wire       a_ready;
  reg        a_valid = 0;
  wire [7:0] b_data;
  wire       b_valid;
  reg        b_ready = 0;

  uart_link dut (
      .clk_a(clk_a),
      .clk_b(clk_b),
      .rst(rst),
      .a_data(a_data),
      .a_valid(a_valid),
      .a_ready(a_ready),
      .b_data(b_data),
      .b_valid(b_valid),
      .b_ready(b_ready)
  );

  localparam LENGTH = 48;
  reg [8*LENGTH-1:0] text = "20.9C\n21.2C\n21.4C\n21.7C\n22.0C\n21.8C\n21.1C\n20.6C\n";
  assign a_data = text[8*LENGTH-1-:8];

  integer pause_a = 20;
  integer seed_a = 11;
  always @(posedge clk_a)
    if (!rst) begin
      if (a_valid && a_ready) begin
        pause_a <= a_data == "\n" ? 40 + $unsigned($random(seed_a)) % 60 : $unsigned($random(seed_a)) % 8;
        text <= {text[8*LENGTH-9:0], text[8*LENGTH-1-:8]};
        a_valid <= 0;
      end else if (!a_valid && a_ready) begin
        if (pause_a == 0) a_valid <= 1;
        else pause_a <= pause_a - 1;
      end
    end

  integer pause_b = 0;
  integer seed_b = 5;
  always @(posedge clk_b)
    if (!rst) begin
      b_ready <= pause_b == 0;
      if (b_valid && b_ready) begin
        b_ready <= 0;
        pause_b <= $unsigned($random(seed_b)) % 16 == 0 ? 520 : $unsigned($random(seed_b)) % 60;
      end else if (pause_b != 0) pause_b <= pause_b - 1;
    end

  initial begin
    $dumpfile("uart.vcd");
    $dumpvars(1, dut);
    $dumpvars(0, dut.rx.sync);
    #61 rst = 0;
    #71939 $finish;
  end
endmodule
