"""Recordings as a Spark data source, on a standalone cluster of one master and two workers."""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import time

import gzdapi
import pytest
from conftest import synth

pytest.importorskip("pyspark", minversion="4")
if shutil.which("java") is None:
    pytest.skip("Spark needs Java, which is not installed", allow_module_level=True)
from pyspark.find_spark_home import _find_spark_home  # noqa: E402

HOME = pathlib.Path(_find_spark_home())
SECONDS = 300  # of a busy machine


def start(log, *words):
    environment = dict(os.environ, SPARK_HOME=str(HOME), PYSPARK_PYTHON=sys.executable,
                       SPARK_LOCAL_IP="127.0.0.1", SPARK_WORKER_DIR=str(log.parent / "work"))
    with log.open("w") as file:
        return subprocess.Popen([HOME / "bin/spark-class", *words], stdout=file, stderr=file,
                                env=environment)


def wait_for(log, pattern):
    for _ in range(SECONDS * 4):
        found = re.search(pattern, log.read_text())
        if found:
            return found
        time.sleep(0.25)
    raise TimeoutError(log.read_text()[-2000:])


@pytest.fixture(scope="module")
def spark(tmp_path_factory):
    from pyspark.sql import SparkSession

    folder = tmp_path_factory.mktemp("spark")
    os.environ.update(PYSPARK_PYTHON=sys.executable, SPARK_LOCAL_IP="127.0.0.1")
    deploy = "org.apache.spark.deploy"
    processes = []
    try:
        log = folder / "master.log"
        processes.append(start(log, f"{deploy}.master.Master", "--host", "127.0.0.1", "--port", "0",
                               "--webui-port", "0"))
        url = wait_for(log, r"Starting Spark master at (spark://\S+)")[1]
        for number in (1, 2):
            processes.append(start(folder / f"worker{number}.log", f"{deploy}.worker.Worker", "--host",
                                   "127.0.0.1", "--cores", "1", "--memory", "1g", "--webui-port", "0", url))
        for number in (1, 2):
            wait_for(folder / f"worker{number}.log", "Successfully registered with master")
        session = (SparkSession.builder.master(url).config("spark.ui.enabled", "false")
                   .config("spark.driver.host", "127.0.0.1").config("spark.executor.memory", "512m")
                   .config("spark.sql.python.filterPushdown.enabled", "true").getOrCreate())
        yield session
        session.stop()
    finally:
        for process in processes:
            process.terminate()
        for process in processes:
            process.wait(SECONDS)


def test_tables(spark, trial, tmp_path):
    import gzdapi.spark

    spark.dataSource.register(gzdapi.spark.GzdDataSource)
    other = synth(tmp_path / "other.gzd", "--duration 3 --eyes right")
    (tmp_path / "trial.gzd").symlink_to(trial)
    for table in ("events", "samples"):
        rows = spark.read.format("gzd").option("table", table).load(f"{tmp_path}/*.gzd")
        for path in (trial, other):
            told = getattr(gzdapi.read(path), table).to_arrow().to_pylist()
            frame = rows.where(rows.recording == path.stem).drop("recording")
            assert [row.asDict() for row in frame.collect()] == told, (table, path)
    chosen = spark.read.format("gzd").schema("recording string, left_x float").load(str(tmp_path))
    assert chosen.columns == ["recording", "left_x"] and chosen.count() == 23000
    executors = spark.sparkContext._jsc.sc().getExecutorMemoryStatus().size()
    assert executors == 3  # the driver and two workers
